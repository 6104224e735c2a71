#!/usr/bin/env python3
"""Runs a program built from an example and compares what it prints with the comment that closes its source.

usage: example_output.py PROGRAM SOURCE
"""

import pathlib
import re
import subprocess
import sys

SECONDS = 120


def expected_output(source):
    match = re.search(r"^/\* Prints:\n(.*)^\*/\s*\Z", pathlib.Path(source).read_text(encoding="utf-8"),
                      re.DOTALL | re.MULTILINE)
    if not match:
        raise ValueError(f"{source} does not close with what it prints")
    return match[1]


def complaint_about(program, source, **options):
    """What is wrong with a run of the program; empty when nothing is."""
    expected = expected_output(source)
    done = subprocess.run([program], capture_output=True, text=True, timeout=SECONDS, **options)
    if (done.returncode, done.stdout, done.stderr) == (0, expected, ""):
        return ""
    return f"{program} ended with {done.returncode} and printed\n{done.stdout}{done.stderr}not\n{expected}"


def main(program, source):
    complaint = complaint_about(program, source)
    print(complaint or f"{program} prints what it says")
    return 1 if complaint else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
