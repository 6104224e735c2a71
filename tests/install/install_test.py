#!/usr/bin/env python3
"""Installs the build, moves it elsewhere, and uses it as other projects do: by find_package, by pkg-config, by hand."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from example_output import complaint_about

CMAKE = os.environ["QUMEL_CMAKE"]
BUILD = os.environ["QUMEL_BUILD"]
VERSION = os.environ["QUMEL_VERSION"]
FOLDERS = {name: os.environ[f"QUMEL_{name.upper()}"] for name in ("bin", "lib", "include", "man", "doc")}
COMPILERS = {  # by the folder of the examples: CMake's name of the language, the compiler, its flags
    "c": ("C", os.environ["QUMEL_CC"], [*os.environ["QUMEL_C_FLAGS"].split(), "-std=c11"]),
    "cpp": ("CXX", os.environ["QUMEL_CXX"], [*os.environ["QUMEL_CXX_FLAGS"].split(), "-std=c++17"]),
}
CONSUMER = pathlib.Path(__file__).resolve().parent / "consumer"
SECONDS = 300
# Nothing but the package itself tells where it lies.
CLEAN = {name: value for name, value in os.environ.items()
         if name not in ("LD_LIBRARY_PATH", "PKG_CONFIG_PATH", "CMAKE_PREFIX_PATH", "DESTDIR", "CFLAGS", "CXXFLAGS")}


def run(*command, **environment):
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=SECONDS, env=CLEAN | environment)
    if done.returncode:
        raise AssertionError(f"{command} ended with {done.returncode}\n{done.stdout}")
    return done.stdout


class InstallTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(scratch.cleanup)
        cls.scratch = pathlib.Path(scratch.name)
        cls.prefix = cls.scratch / "moved"
        run(CMAKE, "--install", BUILD, "--prefix", cls.scratch / "first")
        shutil.move(cls.scratch / "first", cls.prefix)
        cls.lib = cls.prefix / FOLDERS["lib"]
        cls.examples = cls.prefix / FOLDERS["doc"] / "examples"

    def sources(self):
        found = {folder: sorted((self.examples / folder).glob(f"*.{folder}")) for folder in COMPILERS}
        for folder, sources in found.items():
            self.assertTrue(sources, f"no examples in {folder}")
        return found

    def expect_output(self, program, source, **environment):
        complaint = complaint_about(program, source, env=CLEAN | environment)
        self.assertFalse(complaint, complaint)

    def test_find_package(self):
        build = self.scratch / "consumer"
        flags = [f"-DCMAKE_{language}_{what}={value}" for language, compiler, flags in COMPILERS.values()
                 for what, value in (("COMPILER", compiler), ("FLAGS", " ".join(flags)))]
        run(CMAKE, "-G", "Ninja", "-S", CONSUMER, "-B", build, f"-DCMAKE_PREFIX_PATH={self.prefix}",
            f"-DEXAMPLES={self.examples}", *flags)
        run(CMAKE, "--build", build)
        for sources in self.sources().values():
            for source in sources:
                with self.subTest(source.name):
                    self.expect_output(build / source.stem, source)

    def test_pkg_config(self):
        path = {"PKG_CONFIG_PATH": str(self.lib / "pkgconfig")}
        self.assertEqual(VERSION, run("pkg-config", "--modversion", "qumel", **path).strip())
        package = run("pkg-config", "--cflags", "--libs", "qumel", **path).split()
        for folder, sources in self.sources().items():
            _, compiler, flags = COMPILERS[folder]
            for source in sources:
                with self.subTest(source.name):
                    program = self.scratch / f"{source.stem}_by_pkg_config"
                    run(compiler, *flags, source, "-o", program, "-pthread", *package)
                    self.expect_output(program, source, LD_LIBRARY_PATH=str(self.lib))

    def test_command_finds_its_library(self):
        command = self.prefix / FOLDERS["bin"] / "qumel"
        self.assertEqual("7.283185307180\n", run(command, "2*pi+1"))
        for program in (self.examples / "programs").glob("*.qm"):
            self.assertTrue(run(command, "-f", program).strip())

    def test_documents_are_there(self):
        manual = self.prefix / FOLDERS["man"] / "man1" / "qumel.1"
        self.assertIn(f'"qumel {VERSION}"', manual.read_text(encoding="utf-8"))
        self.assertTrue((self.prefix / FOLDERS["include"] / "qumel" / "qumel.h").is_file())
        for name in ("README.md", "docs/language.md", "docs/operators.md", "docs/embedding.md"):
            self.assertTrue((self.prefix / FOLDERS["doc"] / name).is_file(), name)

    def test_library_is_one_file_under_three_names(self):
        names = [f"libqumel_shared.so{ending}" for ending in ("", "." + VERSION.split(".")[0], "." + VERSION)]
        files = {(self.lib / name).resolve() for name in names}
        self.assertEqual({(self.lib / names[-1]).resolve()}, files)
        self.assertTrue(all((self.lib / name).exists() for name in names))


if __name__ == "__main__":
    unittest.main()
