#!/usr/bin/env python3
"""Runs the examples of README.md and docs/*.md. What counts as an example:

Tables with a column headed "Example" and one headed "Result". Both cells hold code in backticks, several pieces parted
  by <br>, as many results as examples; a | inside is written \\|. Each example is evaluated on its own.
Prose: `expression` → `result`, evaluated on its own as well.
```qumel blocks. A line that ends in → and a result (or // → and a result) closes an expression; lines before it without
  a result belong to the same expression, so that programs of many lines can be shown. The expressions of a block share
  one context: variables and the last result carry over.
```sh blocks. After a line "$ command" follow the lines that it prints, errors included. Commands that call qumel or
  ./dev eval are run, with the command of this build; a block without any "$ " is only shown, and so are blocks marked
  as below.
```c and ```cpp blocks are complete programs. They are compiled against the library with warnings as errors, run, and
  have to return 0. When the next block is an ```output block, that is what the program has to print.
A result of the form "error 3060" stands for that error code; an empty pair of backticks for an empty text. Results are
what the command prints, compared character by character.
A block that must not be run says so by a word behind its language: ```cpp shown. Blocks of other languages are shown.
"""

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md"))]
KNOWN = {"README.md", "docs/language.md", "docs/operators.md", "docs/embedding.md", "docs/performance.md"}
WITHOUT_EXAMPLES = {"docs/errors.md"}  # a list of codes
QUMEL = os.environ["QUMEL_COMMAND"]
LIBRARY = pathlib.Path(os.environ["QUMEL_LIBRARY"])
COMPILERS = {  # by the language of a block: the compiler with the flags of this build, and the ending of a source
    "c": (os.environ["QUMEL_CC"].split() + ["-std=c11", "-D_DEFAULT_SOURCE"], ".c"),
    "cpp": (os.environ["QUMEL_CXX"].split() + ["-std=c++17"], ".cpp"),
}
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]
SECONDS = 120

ARROW = re.compile(r"^(.*?)\s*(?://\s*)?→\s*(.*?)\s*$")
IN_PROSE = re.compile(r"(`+)(.+?)\1 → (`+)(.*?)\3(?!`)")
RUNS_COMMAND = re.compile(r"(?:^|[|;&(]\s*)(?:\./dev eval|qumel)\b")


def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=SECONDS, text=True,
                          encoding="utf-8", errors="backslashreplace", **options)


def take_result(lines):
    """Takes what the command printed for one expression off the front of lines."""
    if not lines:
        return "nothing"
    first = lines.pop(0)
    if not first.startswith("qumel: "):
        return first
    code = re.search(r"\((\d+)\)$", first)
    if len(lines) > 1 and re.fullmatch(r"\s+\^", lines[1]):  # the line, and a caret below it
        del lines[:2]
    return f"error {code[1]}" if code else first


class Evaluation:
    """Expressions that share a context, each with the result expected."""

    def __init__(self, place, pairs):
        self.place, self.pairs = place, pairs
        self.size = len(pairs)

    def complaints(self):
        lines = run([QUMEL, "--", *(expression for expression, _ in self.pairs)]).stdout.split("\n")[:-1]
        for expression, expected in self.pairs:
            if (result := take_result(lines)) != expected:
                yield f"{self.place}: {expression!r} gives {result!r}, not {expected!r}"
        if lines:
            yield f"{self.place}: printed besides: {lines}"


class ShellCommand:
    """A command line with what it prints."""

    size = 1

    def __init__(self, place, command, expected):
        self.place, self.command, self.expected = place, command, expected

    def complaints(self):
        path = os.pathsep.join([str(pathlib.Path(QUMEL).parent), os.environ["PATH"]])
        printed = run(["sh", "-c", self.command.replace("./dev eval", "qumel")], cwd=ROOT,
                      env=os.environ | {"PATH": path}).stdout.rstrip("\n")
        if printed != self.expected:
            yield f"{self.place}: {self.command} prints\n{printed}\nnot\n{self.expected}"


class Program:
    """A program in C or C++ with what it prints, or None where that is not told."""

    size = 1

    def __init__(self, place, language, text, expected):
        self.place, self.language, self.text, self.expected = place, language, text, expected

    def complaints(self):
        compiler, ending = COMPILERS[self.language]
        with tempfile.TemporaryDirectory() as folder:
            source = pathlib.Path(folder, "example" + ending)
            source.write_text(self.text, encoding="utf-8")
            program = pathlib.Path(folder, "example")
            built = run([*compiler, *WARNINGS, "-I", ROOT / "include", source, "-o", program, LIBRARY,
                         f"-Wl,-rpath,{LIBRARY.parent}", "-pthread"])
            if built.returncode:
                yield f"{self.place}: does not compile\n{built.stdout}"
                return
            done = run([program], cwd=folder)
        if done.returncode:
            yield f"{self.place}: ends with {done.returncode}, having printed\n{done.stdout}"
        elif self.expected is not None and done.stdout.rstrip("\n") != self.expected:
            yield f"{self.place}: prints\n{done.stdout}\nnot\n{self.expected}"


class Document:
    """The examples of a file, by kind, and what is wrong with the way they are written."""

    def __init__(self, path):
        self.name = path.relative_to(ROOT).as_posix()
        self.examples = {"table": [], "prose": [], "block": [], "shell": [], "program": []}
        self.shown = 0
        self.mistakes = []
        self._last_program = None  # while output may follow it
        self._read(path.read_text(encoding="utf-8").split("\n"))

    def count(self):
        return sum(example.size for examples in self.examples.values() for example in examples)

    def _add(self, kind, example):
        self.examples[kind].append(example)

    def _read(self, lines):
        heads = None
        number = 0
        while number < len(lines):
            line, place = lines[number], f"{self.name}:{number + 1}"
            number += 1
            if line.lstrip().startswith("```"):
                start = number
                while number < len(lines) and lines[number].strip() != "```":
                    number += 1
                if number == len(lines):
                    self.mistakes.append(f"{place}: the block does not end")
                self._read_block(place, line.strip("` ").split(), start, lines[start:number])
                number += 1
            elif line.startswith("|"):
                cells = split_row(line)
                if heads is None:
                    heads = cells
                elif {"Example", "Result"} <= set(heads) and set("".join(cells)) - set("-: "):
                    self._read_row(place, heads, cells)
                continue
            else:
                for _, expression, _, result in IN_PROSE.findall(line):
                    self._add("prose", Evaluation(place, [(expression.strip(), result.strip())]))
            heads = None

    def _read_row(self, place, heads, cells):
        if len(cells) != len(heads):
            self.mistakes.append(f"{place}: {len(cells)} cells below {len(heads)} heads")
            return
        examples, results = (read_codes(cells[heads.index(head)]) for head in ("Example", "Result"))
        if not examples or results is None or len(examples) != len(results):
            self.mistakes.append(f"{place}: as many results as examples are needed, all in backticks")
            return
        for pair in zip(examples, results):
            self._add("table", Evaluation(place, [pair]))

    def _read_block(self, place, words, start, lines):
        language = words[0] if words else ""
        program = None
        if words[1:] not in ([], ["shown"]):
            self.mistakes.append(f"{place}: unknown words {words[1:]}")
        if words[1:]:
            self.shown += 1
        elif language == "qumel":
            self._read_expressions(place, lines)
        elif language == "sh":
            self._read_commands(start, lines)
        elif language in COMPILERS:
            program = Program(place, language, "\n".join(lines) + "\n", None)
            self._add("program", program)
        elif language == "output":
            self._read_output(place, lines)
        else:
            self.shown += 1
        self._last_program = program

    def _read_expressions(self, place, lines):
        pairs, waiting = [], []
        for line in lines:
            match = ARROW.match(line)
            if match:
                pairs.append(("\n".join([*waiting, match[1]]), match[2]))
                waiting = []
            elif line.strip() or waiting:
                waiting.append(line)
        if waiting or not pairs:
            self.mistakes.append(f"{place}: a result is missing at the end of the block")
        if pairs:
            self._add("block", Evaluation(place, pairs))

    def _read_commands(self, start, lines):
        commands = []
        for number, line in enumerate(lines, start + 1):
            if line.startswith("$ "):
                commands.append((f"{self.name}:{number}", line[2:], []))
            elif commands:
                commands[-1][2].append(line)
        if not commands:
            self.shown += 1
        for place, command, output in commands:
            if RUNS_COMMAND.search(command):
                self._add("shell", ShellCommand(place, command, "\n".join(output).rstrip("\n")))
            else:
                self.mistakes.append(f"{place}: the command is not run; mark the block as shown")

    def _read_output(self, place, lines):
        if self._last_program:
            self._last_program.expected = "\n".join(lines).rstrip("\n")
        else:
            self.mistakes.append(f"{place}: output of no program")


def split_row(line):
    return [cell.replace(r"\|", "|").strip() for cell in re.split(r"(?<!\\)\|", line.strip().strip("|"))]


def read_codes(cell):
    """The pieces of code in a cell; None where something else stands there."""
    matches = [re.fullmatch(r"(`+)(.*?)\1", piece.strip()) for piece in cell.split("<br>")]
    if not all(matches):
        return None
    return [match[2].strip() if len(match[1]) > 1 else match[2] for match in matches]


class DocumentsTest(unittest.TestCase):
    documents = [Document(path) for path in DOCUMENTS]

    def expect_none(self, complaints):
        if text := "\n".join(complaints):
            self.fail("\n" + text)

    def run_all(self, kind):
        examples = [example for document in self.documents for example in document.examples[kind]]
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            complaints = [line for lines in pool.map(lambda e: list(e.complaints()), examples) for line in lines]
        self.expect_none(complaints)

    def test_are_well_written(self):
        mistakes = [mistake for document in self.documents for mistake in document.mistakes]
        self.expect_none(mistakes)

    def test_have_examples(self):
        counts = {document.name: document.count() for document in self.documents}
        self.expect_none(f"{name}: no example that runs" for name in sorted((KNOWN | set(counts)) - WITHOUT_EXAMPLES)
                         if not counts.get(name))

    def test_tables(self):
        self.run_all("table")

    def test_prose(self):
        self.run_all("prose")

    def test_blocks(self):
        self.run_all("block")

    def test_shell_commands(self):
        self.run_all("shell")

    def test_programs(self):
        self.run_all("program")


def tearDownModule():
    for document in DocumentsTest.documents:
        kinds = ", ".join(f"{sum(e.size for e in examples)} {kind}" for kind, examples in document.examples.items())
        print(f"{document.name}: {document.count()} examples run ({kinds}), {document.shown} blocks only shown",
              file=sys.stderr)


if __name__ == "__main__":
    unittest.main()
