#!/usr/bin/env bash
# Runs the page test in a headless browser: page_test.sh WRITE_SCENES WORK_FOLDER SCREENSHOT_FOLDER
# Ends with 77 where there is no browser, or nothing to drive it with.
set -euo pipefail

writeScenes=$1
work=$2
export NORVIK2D_SCREENSHOTS=$3
here=$(cd "$(dirname "$0")" && pwd)

skip() {
    echo "viewer.page is skipped: $1"
    exit 77
}

NORVIK2D_CHROMIUM=$(command -v chromium || command -v chromium-browser || command -v google-chrome) ||
    skip "no Chromium (Debian: apt-get install chromium)"
export NORVIK2D_CHROMIUM
command -v node >/dev/null || skip "no Node.js (Debian: apt-get install nodejs)"
command -v npm >/dev/null || skip "no npm (Debian: apt-get install npm)"

mkdir -p "$work" "$NORVIK2D_SCREENSHOTS"
if ! cmp -s "$here/package-lock.json" "$work/installed-lock.json"; then
    cp "$here/package.json" "$here/package-lock.json" "$work"
    (cd "$work" && npm ci --no-audit --no-fund --loglevel=error) || skip "npm can't install playwright-core"
    cp "$here/package-lock.json" "$work/installed-lock.json"
fi

"$writeScenes" "$work/scenes"
export NORVIK2D_SCENES=$work/scenes NODE_PATH=$work/node_modules
exec node "$here/page_test.js"
