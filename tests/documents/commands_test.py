#!/usr/bin/env python3
"""Runs every command of every fenced block of the documents, in order, and compares the output that
a document shows. What is not run as it stands is in rules.py, with the reason."""
import argparse
import collections
import pathlib
import re
import subprocess
import sys
import time
import unittest

sys.dont_write_bytecode = True
import pages  # noqa: E402
import rules  # noqa: E402
from machine import Machine  # noqa: E402
from preparations import AFTER, BEFORE, EXITS, FOLDERS, VARIES  # noqa: E402


def plain(lines: list, varies: list) -> list:
    """Lines without what is another thing on every machine and in every run."""
    out = []
    for line in lines:
        for pattern, text in varies:
            line = re.sub(pattern, text, line)
        out.append(re.sub(r" +", " ", line).rstrip())
    return out


def shows(expected: list, found: list) -> bool:
    """A line "..." stands for any number of lines."""
    pattern = "".join(r"(?:.*\n)*?" if line == "..." else re.escape(line) + "\n"
                      for line in expected)
    return re.fullmatch(pattern, "".join(line + "\n" for line in found)) is not None


class CommandsTest(unittest.TestCase):
    maxDiff = None
    machine: Machine
    without: set  # builds that are not there
    compiler = "i686-w64-mingw32-gcc"
    count = 0

    @classmethod
    def tearDownClass(cls):
        print(f"{cls.count} commands", file=sys.stderr)

    def run_page(self, page: pages.Page) -> None:
        if not any(block.kind in pages.COMMANDS for block in page.blocks):
            return
        seen = collections.Counter()  # blocks of each section
        for block in page.blocks:
            started = time.monotonic()
            place = (block.page, block.section, seen[block.section])
            seen[block.section] += 1
            BEFORE.get(place, lambda _: None)(self.machine)
            if block.kind in pages.COMMANDS:
                self.run_block(block)
            seconds = time.monotonic() - started
            if block.kind in pages.COMMANDS:
                print(f"{seconds:6.1f} s  {block}", file=sys.stderr)
        for look in AFTER.get(page.name, []):
            with self.subTest(page.name, behind=look.__name__):
                self.assertEqual(look(self.machine), "")
        self.machine.stop_server()

    def run_block(self, block: pages.Block) -> None:
        """Commands of one prompt, which follow each other, share what a shell remembers."""
        commands = block.commands()
        while commands:
            planned = [self.plan(commands[0])]
            while len(planned) < len(commands):
                more = self.plan(commands[len(planned)])
                if more[0] != planned[0][0]:
                    break
                planned.append(more)
            run = self.machine.prompt if planned[0][0] == ">" else self.machine.shell
            done = run([text for _, text in planned],
                       *FOLDERS.get((block.page, block.section, planned[0][0]), []))
            for command, (_, text), ran in zip(commands, planned, done):
                with self.subTest(str(block), command=command.text):
                    self.check(block, command, text, ran)
            commands = commands[len(planned):]

    def plan(self, command: pages.Command):
        """("$" or ">", what is run)."""
        other = rules.instead(command.prompt, command.text)
        if other:
            return "$", "true" if self.is_away(other[1]) else other[1]
        if self.is_away(command.text):
            return "$", "true"
        text = command.text
        for long, short in rules.SHORTER.items():
            text = text.replace(long, short)
        return command.prompt, text

    def is_away(self, text: str) -> bool:
        """It is about a build that is not there, which a note on the error stream tells."""
        return any(name in text for name in self.without)

    def check(self, block, command, text, ran) -> None:
        type(self).count += 1
        wanted = EXITS.get(command.text, 0)
        self.assertEqual(ran.code, wanted, f"{text}\n{ran}")
        if command.output and not rules.instead(command.prompt, command.text):
            varies = VARIES[""] + VARIES.get(command.text, [])
            expected, found = plain(command.output, varies), plain(ran.output, varies)
            if not shows(expected, found):
                self.assertEqual("\n".join(found), "\n".join(expected))  # shows where they differ
                self.fail("the output is another one")


class ListsTest(unittest.TestCase):
    """What is said about commands is about commands that there are."""

    def setUp(self):
        self.pages = [pages.Page(path) for path in pages.paths()]
        self.commands = [(block, command) for page in self.pages for block in page.blocks
                         if block.kind in pages.COMMANDS for command in block.commands()]

    def test_every_rule_has_a_command(self):
        for pattern, reason, _ in [*rules.RULES, rules.POWERSHELL]:
            used = any(re.fullmatch(pattern, command.text) for _, command in self.commands)
            self.assertTrue(used and reason, pattern)
        for long in rules.SHORTER:
            self.assertTrue(any(long in command.text for _, command in self.commands), long)

    def test_every_preparation_and_expectation_has_its_place(self):
        texts = {command.text for _, command in self.commands}
        self.assertEqual(set(EXITS) - texts, set())
        self.assertEqual(set(VARIES) - texts, {""})
        self.assertEqual(set(AFTER) - {page.name for page in self.pages}, set())
        places = {(block.page, block.section, command.prompt) for block, command in self.commands}
        self.assertEqual(set(FOLDERS) - places, set())
        numbered = set()
        for page in self.pages:
            seen = collections.Counter()
            for block in page.blocks:
                numbered.add((block.page, block.section, seen[block.section]))
                seen[block.section] += 1
        self.assertEqual(set(BEFORE) - numbered, set())


class CodeTest(unittest.TestCase):
    """Code in the documents compiles. What is part of a function gets one around it."""
    AROUND = """#include <windows.h>
#include <stdio.h>
#include "qorlixclient.h"
#include "qorlixcommands.h"
"""
    LOCALS = """void pump_messages(void);
void around(qorlix_client* client, qorlix_status status, uint32_t problem);
void around(qorlix_client* client, qorlix_status status, uint32_t problem) {
  (void)client; (void)status; (void)problem;
"""

    def test_code_compiles(self):
        compiled = 0
        for path in pages.paths():
            for block in pages.Page(path).blocks:
                if block.kind not in pages.CODE:
                    continue
                compiled += 1
                with self.subTest(str(block)):
                    self.compile(block)
        self.assertGreater(compiled, 3)

    def test_comments_of_the_examples_name_what_is_there(self):
        """How to start a script stands in its first lines. The Python one is run by tests/script; for
        the other there is no PowerShell here."""
        found = set()
        for path in (pages.ROOT / "examples").rglob("*"):
            if path.is_file():
                found |= {(path, name) for name in
                          re.findall(r"(?:py -3-32|-File) (\S+)", path.read_text())}
        self.assertEqual({path.name for path, _ in found}, {"registry.py", "registry.ps1"})
        self.assertEqual({path.name for path, _ in found}, {name for _, name in found})

    def compile(self, block: pages.Block) -> None:
        code = "\n".join(block.lines) + "\n"
        if block.kind == "cpp":
            code = ("#include <cstdio>\n#include <memory>\n#include \"client/QorlixClient.h\"\n"
                    f"void Around(const char* key);\nvoid Around(const char* key) {{\n{code}}}\n")
        elif "int main(" not in code:
            part = not re.search(r"^ *DWORD __cdecl", code, re.MULTILINE)
            code = self.AROUND + (self.LOCALS + code + "}\n" if part else code)
        compiler = {"c": ["i686-w64-mingw32-gcc", "-std=c99"],
                    "cpp": ["i686-w64-mingw32-g++-posix", "-std=c++20"]}[block.kind]
        done = subprocess.run([*compiler, "-fsyntax-only", "-Wall", "-Werror", "-I", pages.ROOT, "-I",
                               pages.ROOT / "client/capi", "-x", {"c": "c", "cpp": "c++"}[block.kind],
                               "-"], input=code, capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stderr)


def add_pages() -> None:
    """One test for each document."""
    for path in pages.paths():
        page = pages.Page(path)
        name = re.sub(r"\W", "_", page.name.removesuffix(".md"))
        setattr(CommandsTest, f"test_{name}", lambda self, page=page: self.run_page(page))


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True,
                        help="build directory of the product")
    given, rest = parser.parse_known_args()
    build = given.build.resolve()
    CommandsTest.without = {name for name in ("native-asan",)
                            if not (build.parent / name / "build.ninja").exists()}
    for name in CommandsTest.without:
        print(f"without build/{name}: its commands are left out", file=sys.stderr)
    CommandsTest.machine = Machine(build)
    add_pages()
    try:
        done = unittest.main(argv=[sys.argv[0], *rest], exit=False)
        return 0 if done.result.wasSuccessful() else 1
    finally:
        CommandsTest.machine.close()


if __name__ == "__main__":
    sys.exit(main())
