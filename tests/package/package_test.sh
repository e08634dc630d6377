#!/usr/bin/env bash
# Makes the packages of a build that is configured for /usr, has them checked, unpacks them into a root of their own, and
# works with what is there. CMAKE, CXX, CXXFLAGS, LDFLAGS and GENERATOR come from the environment.
#
#   package_test.sh BUILD_FOLDER WORK_FOLDER
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
build=$1
work=$2
root=$work/root

for command in dpkg-shlibdeps lintian; do
    if ! command -v "$command" >/dev/null; then
        echo "skipped: no $command here (Debian: apt-get install dpkg-dev lintian)"
        exit 77
    fi
done

rm -rf "$work"
mkdir -p "$root"
# Everything has been built; with this name of a generator cpack does without asking make again.
"${CMAKE%cmake}cpack" -D CPACK_CMAKE_GENERATOR=Ninja --config "$build/CPackConfig.cmake" -B "$work"
lintian --fail-on error "$work"/*.deb

for package in "$work"/*.deb; do dpkg-deb -x "$package" "$root"; done
dpkg-deb -f "$work"/libnorvik2d-dev_*.deb Depends | grep -E '^libnorvik2d1 \(= [0-9.]+-1\)$'
dpkg-deb -f "$work"/libnorvik2d1_*.deb Depends | grep libgmp10

"$here/../consumer/consumer_test.sh" findPackage "$root/usr" "$work/findPackage"
# As one compiles for another machine: what is installed there lies below a root that isn't that of this one.
PKG_CONFIG_SYSROOT_DIR="$root" "$here/../consumer/consumer_test.sh" pkgConfig "$root/usr" "$work/pkgConfig"

library=$(find "$root" -name 'libnorvik2d.so.1')
LD_LIBRARY_PATH=${library%/*} "$root/usr/bin/norvik2d" --version
gzip -dc "$root/usr/share/man/man1/norvik2d.1.gz" | grep -c '^\.SS'
