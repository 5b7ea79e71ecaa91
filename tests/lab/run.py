#!/usr/bin/env python3
"""Runs the tests of this folder side by side, because they mostly wait, each case in a
process of its own. Prints a line for each, the output of those that failed, and the
counts. The exit code is 0 if no case failed and at least one ran.

    run.py [-j JOBS] [--list] [WORD]...     cases whose names contain one of the words
"""

import argparse
import concurrent.futures
import pathlib
import re
import subprocess
import sys
import time
import unittest

sys.dont_write_bytecode = True

FOLDER = pathlib.Path(__file__).resolve().parent
SECONDS = 150  # for one case


def cases(folder):
    """Names of all cases, as `python3 -m unittest` takes them in `folder`."""
    found = []

    def walk(suite):
        for each in suite:
            if isinstance(each, unittest.TestSuite):
                walk(each)
            else:
                found.append(each.id())

    sys.path.insert(0, str(folder))
    walk(unittest.TestLoader().discover(str(folder)))
    return found


def run(folder, name, seconds):
    """Runs one case; returns "passed", "failed" or "skipped", its time and output."""
    started = time.monotonic()
    try:
        done = subprocess.run(
            [sys.executable, "-B", "-m", "unittest", "-v", name],
            cwd=folder,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            errors="replace",
            check=False,
            timeout=seconds,
        )
        code, output = done.returncode, done.stdout
    except subprocess.TimeoutExpired as error:
        code = None
        output = (error.stdout or b"").decode(errors="replace")
        output += f"\nstopped after {seconds} s"
    if code != 0 or "\nRan 1 test" not in output:
        result = "failed"
    else:
        result = "skipped" if re.search("skipped=[1-9]", output) else "passed"
    return result, time.monotonic() - started, output


def main(arguments):
    """The program."""
    parser = argparse.ArgumentParser(description="Runs the lab's tests side by side.")
    parser.add_argument("-j", "--jobs", type=int, default=8, help="at a time (8)")
    parser.add_argument("--list", action="store_true", help="print the names and end")
    parser.add_argument("--folder", type=pathlib.Path, default=FOLDER)
    parser.add_argument("--seconds", type=float, default=SECONDS, help="for one case")
    parser.add_argument("words", nargs="*", help="run what contains one of them")
    options = parser.parse_args(arguments)
    names = cases(options.folder)
    if options.words:
        names = [n for n in names if any(word in n for word in options.words)]
    if options.list:
        print("\n".join(names))
        return 0
    # The tests of the tool take longest, so they start first.
    names.sort(key=lambda name: not name.startswith("test_tool"))
    counts = {"passed": 0, "failed": 0, "skipped": 0}
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        waiting = {
            pool.submit(run, options.folder, name, options.seconds): name
            for name in names
        }
        for each in concurrent.futures.as_completed(waiting):
            result, seconds, output = each.result()
            counts[result] += 1
            print(f"{result:8}{seconds:6.1f} s  {waiting[each]}", flush=True)
            if result != "passed":
                print(output, flush=True)
    counted = ", ".join(f"{count} {result}" for result, count in counts.items())
    print(counted)
    return 0 if counts["failed"] == 0 and counts["passed"] + counts["skipped"] else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
