#!/usr/bin/env python3
"""Checks that the sources keep to the layout: includes point downwards, nothing goes in circles, the command and the
examples see the public header only, no file outgrows a reader, and every exported function is named in a test."""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FLOORS = {"base": 0, "rules": 1, "objects": 1, "tables": 2, "values": 3, "language": 3, "engine": 4, "operators": 5,
          "context": 6, "api": 7}
PUBLIC_HEADER = "qumel/qumel.h"
MOST_LINES = {"src/": 450, "cli/": 450, "": 650}  # by the first folder that fits
FREE_OF_LIMIT = {"include/qumel/qumel.h"}  # one header by design; it is mostly docstrings

# Habits that a compiler does not see: (what to look for, where, why not).
HABITS = [
    (re.compile(r"\b(setlocale|strtod|atof|atoi|sprintf|snprintf|stringstream)\s*[(<]"), "src/",
     "depends on the locale; use base/number_text.h"),
    (re.compile(r"(\bnew\s+[A-Za-z_:]+\s*[\[({;]|\bmalloc\s*\(|\bfree\s*\(|\bdelete\s+\w+;)"), "src/",
     "memory needs an owner; use a container or a smart pointer"),
    (re.compile(r"\bstd::(cout|cerr)\b"), "src/", "the library does not talk; results and errors are handed back"),
    (re.compile(r"\b(TODO|FIXME|XXX)\b"), "", "finish it or leave it out"),
]
# What the rules above allow: an object of the tree goes when its last user lets go.
ALLOWED = {
    ("src/objects/object.cpp", "delete this"),
}


def tracked(*patterns):
    """The files of ours that match, also those not yet committed."""
    command = ["git", "ls-files", "--cached", "--others", "--exclude-standard", "--", *patterns]
    names = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, check=True).stdout.split()
    return [name for name in names if (ROOT / name).exists()]


def includes_of(name):
    return re.findall(r'^\s*#\s*include\s*["<]([^">]+)[">]', (ROOT / name).read_text(), re.MULTILINE)


def circle_in(graph):
    """A list of nodes that lead back to the first, or an empty list."""
    done, path = set(), []

    def visit(node):
        if node in path:
            return path[path.index(node):] + [node]
        if node in done:
            return []
        path.append(node)
        for target in sorted(graph.get(node, ())):
            if found := visit(target):
                return found
        path.pop()
        done.add(node)
        return []

    for start in sorted(graph):
        if found := visit(start):
            return found
    return []


def without_comments(text):
    return re.sub(r"//[^\n]*|/\*.*?\*/", lambda match: "\n" * match[0].count("\n"), text, flags=re.DOTALL)


def check_floors(complain):
    graph = {}
    for name in tracked("src/*.h", "src/*.cpp"):
        floor = name.split("/")[1]
        inside = name.removeprefix("src/")
        for target in includes_of(name):
            target_floor = target.split("/")[0]
            if target_floor not in FLOORS:
                continue
            if not (ROOT / "src" / target).exists():
                complain(f"{name}: no such file: {target}")
            if target_floor != floor and FLOORS[target_floor] >= FLOORS[floor]:
                complain(f"{name}: {target} is not below {floor}/")
            graph.setdefault(inside, set()).add(target)
    if circle := circle_in(graph):
        complain("includes go in a circle: " + " -> ".join(circle))
    folders = {}
    for source, targets in graph.items():
        folder = source.split("/")[0]
        folders.setdefault(folder, set()).update(t.split("/")[0] for t in targets if not t.startswith(folder + "/"))
    if circle := circle_in(folders):
        complain("folders go in a circle: " + " -> ".join(circle))


def check_outside(complain):
    for name in tracked("cli/*.cpp", "cli/*.h", "examples/*.c", "examples/*.cpp"):
        for target in includes_of(name):
            is_own = "/" not in target and (ROOT / name).with_name(target).exists()
            is_ours = target.startswith(("qumel/", "src/", *(f"{floor}/" for floor in FLOORS)))
            if is_ours and target != PUBLIC_HEADER and not is_own:
                complain(f"{name}: {target}; only {PUBLIC_HEADER} is open to programs")


def check_files(complain):
    for name in tracked("*.c", "*.cpp", "*.h", "*.py"):
        text = (ROOT / name).read_text()
        lines = text.count("\n")
        limit = next(most for folder, most in MOST_LINES.items() if name.startswith(folder))
        if lines > limit and name not in FREE_OF_LIMIT:
            complain(f"{name}: {lines} lines, more than {limit}; split it by concern")
        if name.startswith("src/") and not text.startswith(("//", "/*")):
            complain(f"{name}: opens without a word on what lives in it")
        if name == "lint/check_layout.py":
            continue
        for number, line in enumerate(without_comments(text).split("\n"), 1):
            for habit, folder, why in HABITS:
                match = habit.search(line) if name.startswith(folder) else None
                if match and not any(name == file and match[0].startswith(word) for file, word in ALLOWED):
                    complain(f"{name}:{number}: {match[0].strip()}: {why}")


def check_exports(complain):
    header = without_comments((ROOT / "include" / PUBLIC_HEADER).read_text())
    exported = re.findall(r"^QM_API [^;(]*?\b(\w+)\(", header, re.MULTILINE)
    # what the comparison of two libraries calls is not tested by that
    names = [name for name in tracked("tests/*.c", "tests/*.cpp", "tests/*.h") if not name.startswith("tests/compare/")]
    tests = "\n".join((ROOT / name).read_text() for name in names)
    named = set(re.findall(r"\w+", tests))
    for function in exported:
        if function not in named:
            complain(f"include/{PUBLIC_HEADER}: no test calls {function}")


def main():
    complaints = []
    for check in (check_floors, check_outside, check_files, check_exports):
        check(complaints.append)
    print("\n".join(complaints) if complaints else "layout: nothing found")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
