#!/usr/bin/env python3
"""Plants the faults of faults.list one after the other and tells which of them the tests notice.

    plant.py            all of them; fails if fewer than 38 of 40 are caught
    plant.py 3 17 ...   only these; fails if one of them survives

Works in build/faults, on a copy of the tree, so that the sources themselves are never touched.
"""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "faults"
TREE, BUILD = WORK / "tree", WORK / "build"
JOBS = int(os.environ.get("JOBS") or os.cpu_count())
FEWEST_CAUGHT = 38
# A few times what all tests take: what isn't done then hangs. By the clock too, for those that wait for each other.
CPU_SECONDS, SECONDS = 300, 900


class Fault:
    def __init__(self, entry):
        title, *lines = entry.strip("\n").split("\n")
        number, self.path, *self.tests = title.split()
        self.is_struck = number.startswith("~")
        self.number = int(number.lstrip("~"))
        self.old = "\n".join(line[1:] for line in lines if line.startswith("-"))
        self.new = "\n".join(line[1:] for line in lines if line.startswith("+"))

    def planted_in(self, text):
        if text.count(self.old) != 1:
            sys.exit(f"fault {self.number}: its text occurs {text.count(self.old)} times in {self.path}")
        return text.replace(self.old, self.new)


def read_faults():
    text = (ROOT / "tests/faults/faults.list").read_text()
    return [Fault(entry) for entry in re.split(r"\n\n", text) if not entry.startswith("#")]


def copy_tree():
    """Files that haven't changed keep their times, so that little is built again."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                            cwd=ROOT, check=True, capture_output=True, text=True).stdout
    names = {name for name in listed.split("\0") if name and (ROOT / name).is_file()}
    for name in names:
        source, target = ROOT / name, TREE / name
        if target.is_file() and target.read_bytes() == source.read_bytes():
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(source, target)
        shutil.copymode(source, target)
    for file in [file for file in TREE.rglob("*") if file.is_file()]:
        if str(file.relative_to(TREE)) not in names:
            file.unlink()


def configure():
    command = ["cmake", "-S", TREE, "-B", BUILD, "-DCMAKE_BUILD_TYPE=Release",
               "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG", "-DBUILD_SHARED_LIBS=OFF", "-DNORVIK2D_BUILD_TESTS=ON",
               "-DNORVIK2D_BUILD_EXAMPLES=OFF", "-DNORVIK2D_BUILD_TOOLS=ON", "-DNORVIK2D_INSTALL=OFF"]
    if shutil.which("ccache"):
        command.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)


def build():
    result = subprocess.run(["cmake", "--build", BUILD, "--parallel", str(JOBS), "--target", "norvik2d_tests",
                             "norvik2d_tool"], capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(f"{result.stdout}\n{result.stderr}\nIt doesn't compile.")


def run(command, directory, **variables):
    """What a command prints, and what became of it: '' for success."""
    process = subprocess.Popen(["prlimit", f"--cpu={CPU_SECONDS}", *command], cwd=directory,
                               env=os.environ | variables, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                               errors="replace", start_new_session=True)
    try:
        output = process.communicate(timeout=SECONDS)[0]
        ends = {0: "", -signal.SIGXCPU: "hangs in", -signal.SIGKILL: "hangs in"}
        end = ends.get(process.returncode, "crashes in" if process.returncode < 0 else "fails")
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        output, end = process.communicate()[0], "hangs in"
    return output, end


def first_gtest_failure(test_filter, num_shards=1):
    def failure_in(shard):
        output, end = run([BUILD / "tests/norvik2d_tests", "--gtest_fail_fast", "--gtest_color=no",
                           f"--gtest_filter={test_filter}"], BUILD / "tests/output",
                          GTEST_TOTAL_SHARDS=str(num_shards), GTEST_SHARD_INDEX=str(shard))
        if not end:
            return ""
        failed = re.findall(r"^\[  FAILED  \] ([^\s,]+)", output, re.M)
        begun = re.findall(r"^\[ RUN      \] (\S+)", output, re.M)
        return failed[0] if failed else f"{end} {begun[-1] if begun else 'the beginning'}"

    with ThreadPoolExecutor() as pool:
        return next(filter(None, pool.map(failure_in, range(num_shards))), "")


def first_tool_failure():
    output, end = run(["ctest", "--output-on-failure", "--stop-on-failure", "-R", r"^cli\."], BUILD)
    failed = re.search(r"Test +#\d+: (\S+) .*(Failed|Timeout|Exception)", output)
    return "" if not end else failed[1] if failed else end


def suites_in(test):
    source = (TREE / f"tests/{test}_test.cpp").read_text()
    names = re.findall(r"^(?:TYPED_)?TEST(?:_[FP])?\((\w+),", source, re.M)
    return [pattern for name in dict.fromkeys(names) for pattern in (f"{name}.*", f"*/{name}.*", f"{name}/*")]


def first_failure(tests):
    """The name of the first test that fails: those that are about the source come first. '' if none does."""
    related = ":".join(suite for test in tests for suite in suites_in(test))
    failure = first_gtest_failure(related) if related else ""
    return failure or first_gtest_failure(f"-{related}", JOBS) or first_tool_failure()


def plant(fault):
    source = TREE / fault.path
    text = source.read_text()
    source.write_text(fault.planted_in(text))
    try:
        build()
        return first_failure(fault.tests)
    finally:
        source.write_text(text)


def main():
    faults = read_faults()
    wanted = [int(argument) for argument in sys.argv[1:]]
    if wanted:
        faults = [fault for number in wanted for fault in faults if fault.number == number]
    else:
        faults = [fault for fault in faults if not fault.is_struck]
    for fault in faults:
        fault.planted_in((ROOT / fault.path).read_text())
    copy_tree()
    configure()
    build()
    if not wanted and (failure := first_failure([])):
        sys.exit(f"Without any fault: {failure}")
    num_caught = 0
    for fault in faults:
        start = time.monotonic()
        failure = plant(fault)
        num_caught += bool(failure)
        print(f"{fault.number:3}  {fault.path:38}  {failure or 'SURVIVES':60}  {time.monotonic() - start:4.0f} s",
              flush=True)
    print(f"{num_caught} of {len(faults)} caught")
    return int(num_caught < (len(faults) if wanted else FEWEST_CAUGHT))


if __name__ == "__main__":
    sys.exit(main())
