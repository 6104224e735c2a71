#!/usr/bin/env python3
"""Runs qumel_instructions under callgrind and prints the machine instructions of each thing that it counts.

usage: instructions.py PROGRAM
"""

import pathlib
import re
import subprocess
import sys
import tempfile

LOOP = "loop"  # the count of a turn that does nothing, which is taken from the others


def count(program):
    """Instructions of a turn, by name, in the order of the program."""
    with tempfile.TemporaryDirectory() as folder:
        command = ["valgrind", "--tool=callgrind", "--collect-atstart=no",
                   f"--callgrind-out-file={folder}/counts", program]
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode:
            sys.exit(done.stdout)
        counts = {}
        dumps = pathlib.Path(folder).glob("counts.*")
        for dump in sorted(dumps, key=lambda path: int(path.suffix[1:])):
            text = dump.read_text()
            label = re.search(r"^desc: Trigger: Client Request: (\d+) (.*)$", text, re.MULTILINE)
            total = re.search(r"^totals: (\d+)", text, re.MULTILINE)
            if label and total:
                counts[label[2]] = int(total[1]) / int(label[1])
        return counts


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    counts = count(sys.argv[1])
    loop = counts.pop(LOOP)
    print("\nMachine instructions (callgrind)\n\n| what | instructions |\n|---|---:|")
    for name, instructions in counts.items():
        print(f"| {name} | {instructions - loop:.0f} |")


if __name__ == "__main__":
    main()
