#!/usr/bin/env python3
"""The library exports the functions that its header declares: no more, no less.

usage: exported_names_test.py NM HEADER LIBRARY
"""

import pathlib
import re
import subprocess
import sys


def declared_names(header):
    """Every name before a parenthesis outside comments, directives and bodies, marked as exported or not."""
    text = re.sub(r"/\*.*?\*/|//[^\n]*", " ", header, flags=re.DOTALL)
    text = re.sub(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", "", text, flags=re.MULTILINE)
    text = re.sub(r"QM_REF\(([^)]*)\)", r"\1", text)
    text = re.sub(r'extern "C" \{|enum \w+ \{.*?\};|struct \w+;', "", text, flags=re.DOTALL)
    return [re.search(r"(\w+)\s*\(", declaration)[1] for declaration in text.split(";") if "(" in declaration]


def exported_names(nm, library):
    lines = subprocess.run([nm, "-D", "--defined-only", library], capture_output=True, text=True, check=True).stdout
    return [line.split()[-1] for line in lines.splitlines()]


def main(nm, header, library):
    declared = declared_names(pathlib.Path(header).read_text(encoding="utf-8"))
    exported = exported_names(nm, library)
    twice = sorted({name for name in declared if declared.count(name) > 1})
    missing = sorted(set(declared) - set(exported))
    undeclared = sorted(set(exported) - set(declared))
    for what, names in (("declared twice", twice), ("not exported", missing), ("not declared", undeclared)):
        if names:
            print(f"{what}: {', '.join(names)}")
    print(f"{len(declared)} functions declared, {len(exported)} names exported")
    return 1 if twice or missing or undeclared or not declared else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
