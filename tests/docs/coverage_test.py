#!/usr/bin/env python3
"""Checks that the documentation is complete: every operator has a row with examples, every error code its text."""

import ast
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
OPERATOR_ROW = re.compile(r'^QM_\w+\(("(?:[^"\\]|\\.)+"), ', re.MULTILINE)
COMPOUND_ROW = re.compile(r'^QM_OPERATOR\("([^"]+)".*CQMCompoundAssignment<', re.MULTILINE)
ERROR_ROW = re.compile(r'^QM_ERROR\(\w+, (\d+), "([^"]+)"\)', re.MULTILINE)


def read(name):
    return (ROOT / name).read_text(encoding="utf-8")


def tokens():
    return {ast.literal_eval(literal) for literal in OPERATOR_ROW.findall(read("src/base/operators.inc"))}


def rows(name):
    """The cells of all table rows, each with the heads of its table."""
    heads = None
    for line in read(name).split("\n"):
        if not line.startswith("|"):
            heads = None
            continue
        cells = [cell.replace(r"\|", "|").strip() for cell in re.split(r"(?<!\\)\|", line.strip()[1:-1])]
        if heads is None:
            heads = cells
        elif set("".join(cells)) - set("-: "):
            yield heads, cells


class CoverageTest(unittest.TestCase):
    def test_every_operator_has_a_row_with_examples(self):
        described = set()
        for heads, cells in rows("docs/operators.md"):
            if "Example" in heads and cells[heads.index("Example")]:
                described.update(code.strip() for _, code in re.findall(r"(`+)(.+?)\1", cells[0]))
        self.assertGreater(len(tokens()), 150)
        self.assertEqual(sorted(tokens() - described), [])

    def test_every_operator_has_a_place_among_the_precedences(self):
        placed = set()
        for heads, cells in rows("docs/operators.md"):
            if heads[0] == "Level":
                placed.update(re.findall(r"`([^`]+)`", cells[1]))
        # families and words are named there as such
        compound = set(COMPOUND_ROW.findall(read("src/base/operators.inc")))
        signs = {token for token in tokens() - compound if not re.search(r"\w", token)}
        self.assertEqual(sorted(signs - placed - {"[", "."}), [])

    def test_every_error_has_its_code_and_text(self):
        listed = {(cells[0], cells[1]) for _, cells in rows("docs/errors.md")}
        errors = set(ERROR_ROW.findall(read("src/base/errors.inc")))
        self.assertGreater(len(errors), 50)
        self.assertEqual(sorted(errors - listed), [])


if __name__ == "__main__":
    unittest.main()
