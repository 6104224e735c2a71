#!/usr/bin/env python3
"""Runs the command qumel as its users do: arguments, files and standard input in; results, errors and status out."""

import os
import pathlib
import pty
import re
import subprocess
import tempfile
import unittest
from dataclasses import dataclass, field

QUMEL = os.environ["QUMEL_COMMAND"]
PROGRAMS = pathlib.Path(__file__).resolve().parents[2] / "examples" / "programs"
SECONDS = 120
MANY = 20000


def to_bytes(text):
    return text.encode("utf-8", "surrogateescape")  # "\udcff" stands for the byte 0xFF


def run(arguments, text="", folder=None):
    return subprocess.run([QUMEL, *map(to_bytes, arguments)], input=to_bytes(text), capture_output=True, cwd=folder,
                          timeout=SECONDS)


@dataclass
class Case:
    """A call, and all that it prints."""
    name: str
    arguments: list = field(default_factory=list)
    text: str = ""  # standard input
    files: dict = field(default_factory=dict)
    results: list = field(default_factory=list)
    errors: list = field(default_factory=list)
    status: int = 0


def refusal(complaint):
    return [f"qumel: {complaint}", "Try qumel --help."]


DIVISION = "qumel: Executor: division by zero attempted (3110)"
UNDEFINED = "qumel: Executor: target variable is not defined (3060)"
EMPTY = "qumel: Executor: bad expression (3030)"
STRAY = "qumel: Postfixer: add operator failed (2030)"
UNKNOWN = "qumel: Postfixer: unknown token found (2010)"

ARGUMENT_CASES = [
    Case("one context for all", ["x = 3", "x^2", "last + 1"],
         results=["3.000000000000", "9.000000000000", "10.000000000000"]),
    Case("going on after an error", ["x = 1/0", "2", "last", "1 + never_set"], status=1,
         results=["2.000000000000", "2.000000000000"], errors=[DIVISION, UNDEFINED]),
    Case("all types", ["2 > 1", '"a" $+ "b"', "allowcomplex; sqrt(-4)"],
         results=["true", "ab", "( 0.000000000000 |_ 2.000000000000 )"]),
    Case("a dash before digits is no option", ["-2-3"], results=["-5.000000000000"]),
    Case("a dash before a call is no option", ["-sqrt(4)"], results=["-2.000000000000"]),
    Case("expressions behind --", ["x = 3", "--", "-x", "--x"],
         results=["3.000000000000", "-3.000000000000", "2.000000000000"]),
    Case("only --", ["--"], "1+1", results=["2.000000000000"]),
    Case("version", ["--version"], results=["qumel 2.5"]),
    Case("unknown short option", ["-x", "1"], status=2,
         errors=refusal("unknown option -x (if it is an expression, put -- before it)")),
    Case("unknown long option", ["1", "--nonsense"], status=2,
         errors=refusal("unknown option --nonsense (if it is an expression, put -- before it)")),
    Case("-f without a name", ["1", "-f"], status=2, errors=refusal("-f needs the name of a file")),
    Case("empty expressions", ["", " \t", "1"], status=1, results=["1.000000000000"], errors=[EMPTY, EMPTY]),
]

CARET_CASES = [
    Case("the last character read", ["2*)"], status=1, errors=[STRAY, "  2*)", "    ^"]),
    Case("the end", ["(1"], status=1,
         errors=["qumel: Postfixer: missing right parenthesis (2050)", "  (1", "   ^"]),
    Case("no place in an error of evaluating", ["1 + never_set"], status=1, errors=[UNDEFINED]),
    Case("below leading spaces", ["   2*)"], status=1, errors=[STRAY, "     2*)", "       ^"]),
    Case("below tabs", ["\t2\t*)"], status=1, errors=[STRAY, "  \t2\t*)", "  \t \t ^"]),
    Case("in the line of a longer text", ["1 +\n 2*)\n+ 3"], status=1, errors=[STRAY, "   2*)", "     ^"]),
    Case("behind characters of many bytes", ['"äöü€" + )'], status=1, errors=[STRAY, '  "äöü€" + )', "           ^"]),
    Case("below a character of many bytes", ["ä + 1"], status=1, errors=[UNKNOWN, "  ä + 1", "  ^"]),
    Case("below a byte that is no character", ["\udcff"], status=1, errors=[UNKNOWN, "  \udcff", "  ^"]),
]

INPUT_CASES = [
    Case("a line each, blank ones skipped", text="1+1\n\n \t\nx=2\nx*3",
         results=["2.000000000000", "2.000000000000", "6.000000000000"]),
    Case("nothing"),
    Case("an error does not end it", text="1/0\n7\n", status=1, results=["7.000000000000"], errors=[DIVISION]),
    Case("line ends with carriage returns", text="1\r\n\r\n2\r\n", results=["1.000000000000", "2.000000000000"]),
    Case("a zero byte", text="1\0+1\n2\n", status=1, results=["2.000000000000"],
         errors=["qumel: the expression holds a zero byte"]),
    Case("texts keep their bytes", text='"grün" $+ "e"\n"\udcff"\n', results=["grüne", "\udcff"]),
    Case("not read beside arguments", ["3"], text="1+1\n", results=["3.000000000000"]),
]

FILE_CASES = [
    Case("many lines are one program", ["-f", "p.qm"], files={"p.qm": "// doubles\nx = 4;\nreturn (x * 2)\n"},
         results=["8.000000000000"]),
    Case("in one context with expressions, in order", ["x = 3", "-f", "p.qm", "x"], files={"p.qm": "x = x + 1"},
         results=["3.000000000000", "4.000000000000", "4.000000000000"]),
    Case("a place in an error", ["-f", "p.qm", "-f", "q.qm"], status=1, errors=[
        "qumel: p.qm:2:3: Postfixer: add operator failed (2030)", "  2*)", "    ^",
        "qumel: q.qm: Executor: division by zero attempted (3110)"],
        files={"p.qm": "1+\n2*)\n", "q.qm": "1/0\n"}),
    Case("an empty file", ["-f", "p.qm", "1"], files={"p.qm": ""}, status=1, results=["1.000000000000"],
         errors=["qumel: p.qm: Executor: bad expression (3030)"]),
    Case("a zero byte", ["-f", "p.qm"], files={"p.qm": "1\0"}, status=1,
         errors=["qumel: p.qm: the expression holds a zero byte"]),
    Case("a file that is missing, a folder", ["-f", "no.qm", "-f", ".", "1"], status=1, results=["1.000000000000"],
         errors=["qumel: cannot read no.qm", "qumel: cannot read ."]),
    Case("a name that looks like an option", ["-f", "--", "1"], files={"--": "2"},
         results=["2.000000000000", "1.000000000000"]),
]

LONG_CASES = [
    Case("a long argument", ["+".join(["1"] * MANY)], results=[f"{MANY}.000000000000"]),
    Case("a long line", text="+".join(["1"] * 10 * MANY), results=[f"{10 * MANY}.000000000000"]),
    Case("deep parentheses", text="(" * MANY + "1" + ")" * MANY, results=["1.000000000000"]),
    Case("many lines", text="1\n" * MANY, results=["1.000000000000"] * MANY),
]


class CommandTest(unittest.TestCase):
    maxDiff = 4000

    def run_cases(self, cases):
        for case in cases:
            with self.subTest(case.name), tempfile.TemporaryDirectory() as folder:
                for name, content in case.files.items():
                    pathlib.Path(folder, name).write_bytes(to_bytes(content))
                done = run(case.arguments, case.text, folder)
                expected = ["".join(line + "\n" for line in lines) for lines in (case.results, case.errors)]
                printed = [stream.decode("utf-8", "surrogateescape") for stream in (done.stdout, done.stderr)]
                self.assertEqual(expected, printed)
                self.assertEqual(case.status, done.returncode)

    def test_arguments(self):
        self.run_cases(ARGUMENT_CASES)

    def test_carets(self):
        self.run_cases(CARET_CASES)

    def test_standard_input(self):
        self.run_cases(INPUT_CASES)

    def test_files(self):
        self.run_cases(FILE_CASES)

    def test_long_texts(self):
        self.run_cases(LONG_CASES)

    def test_help_names_every_option(self):
        done = run(["--help"])
        self.assertEqual(0, done.returncode)
        self.assertEqual(b"", done.stderr)
        for word in (b"usage: qumel", b"-f FILE", b"--help", b"--version", b"exit status"):
            self.assertIn(word, done.stdout)

    def test_prompts_at_a_terminal(self):
        ours, theirs = pty.openpty()
        try:
            os.write(ours, b"1+1\n\x04")  # the end of input, typed
            done = subprocess.run([QUMEL], stdin=theirs, capture_output=True, timeout=SECONDS)
        finally:
            os.close(ours)
            os.close(theirs)
        self.assertEqual((0, b"> 2.000000000000\n> \n", b""), (done.returncode, done.stdout, done.stderr))

    def test_fails_when_results_cannot_be_written(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([QUMEL, "1"], stdout=full, stderr=subprocess.PIPE, timeout=SECONDS)
        self.assertEqual((1, b"qumel: cannot write the results\n"), (done.returncode, done.stderr))


class ProgramsTest(unittest.TestCase):
    """Each program tells its result in its first line: // What it does. Result: 42"""

    def test_give_the_results_that_they_tell(self):
        programs = sorted(PROGRAMS.glob("*.qm"))
        self.assertTrue(programs)
        for program in programs:
            with self.subTest(program.name):
                told = re.match(r"//.*\bResult: (.*)\n", program.read_text(encoding="utf-8"))
                self.assertTrue(told, "the first line tells no result")
                done = run(["-f", str(program)])
                self.assertEqual((0, b""), (done.returncode, done.stderr))
                printed = done.stdout.decode("utf-8").removesuffix("\n")
                self.assertIn(told[1], (printed, re.sub(r"\.0+$", "", printed)))


if __name__ == "__main__":
    unittest.main()
