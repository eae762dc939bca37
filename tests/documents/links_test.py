#!/usr/bin/env python3
"""Looks through the documents without running anything: do links and the files, programs and
commands that they name exist, and does every block say what is in it?"""
import re
import subprocess
import sys
import unittest

sys.dont_write_bytecode = True
import pages  # noqa: E402

# A line of a block that nobody would run unless it says so.
COMMAND = re.compile(r"\s*(\$ |> \S|PS> |\./|tools/|bench/|build/|qorlixctl |QorlixSRV\.exe|cmake |"
                     r"ctest |wine |git |export |set [A-Z]|i686-|lib /|cl /|cp |mkdir |\. tools|QORLIX_)")
FOLDERS = sorted(path.name for path in pages.ROOT.iterdir()
                 if path.is_dir() and not path.name.startswith(".") and path.name != "build")
# Names that stand for several files.
PATTERN = re.compile(r"[*<>{}…]|\.\.\.")


def command_line_verbs() -> set:
    """What `qorlixctl` can be asked, as its own help has it: "board list", "ping"."""
    verbs = set()
    for path in (pages.ROOT / "cli").glob("*.cpp"):
        if not path.stem.endswith("Test"):
            verbs |= set(re.findall(r'\{"([a-z-]+(?: [a-z-]+)?)"', path.read_text()))
    return verbs


def tests_of(folder) -> set:
    """Every test below the folder as "Suite.Name", and every suite and file of tests by its name."""
    names = set()
    for path in folder.rglob("*Test.cpp"):
        if path.relative_to(folder).parts[0] == "build":
            continue
        names.add(path.stem)
        for suite, name in re.findall(r"^(?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\)", path.read_text(),
                                      re.MULTILINE):
            names |= {suite, f"{suite}.{name}"}
    return names


class LinksTest(unittest.TestCase):
    def setUp(self):
        self.pages = [pages.Page(path) for path in pages.paths()]
        self.problems = []

    def tearDown(self):
        self.assertEqual(self.problems, [], "\n" + "\n".join(self.problems))

    def complain(self, page, number, text):
        self.problems.append(f"{page.name}:{number}: {text}")

    def test_links_and_anchors_exist(self):
        self.problems, count = pages.dead_links(self.pages)
        self.assertGreater(count, 50)

    def test_every_document_can_be_reached_from_the_first(self):
        by_path = {page.path: page for page in self.pages}
        seen, left = set(), [pages.ROOT / "README.md", pages.PACKAGED]
        while left:
            page = by_path.get(left.pop())
            if page and page.path not in seen:
                seen.add(page.path)
                left += [page.target(link)[0] for _, link in page.links()]
        self.problems = [f"{page.name}: no way leads there" for page in self.pages
                         if page.path not in seen]

    def test_a_list_of_contents_has_every_section_in_order(self):
        for page in self.pages:
            listed = [target[1:] for number, target in page.links()
                      if any(number == at and line.startswith("- [") and line.endswith(")")
                             for at, line in page.text) and target.startswith("#")]
            sections = [pages.anchor_of(line[3:]) for _, line in page.text
                        if line.startswith("## ")]
            if listed and listed != sections:
                self.complain(page, 1, f"the list of contents has {listed}, the page {sections}")

    def test_blocks_say_what_is_in_them(self):
        for page in self.pages:
            for block in page.blocks:
                if block.kind in pages.COMMANDS:
                    if not block.commands():
                        self.complain(page, block.line, "a block of commands without any")
                elif block.kind not in pages.CODE | {""}:
                    self.complain(page, block.line, f"{block.kind}: blocks of this kind are unknown")
                elif not block.kind:
                    self.problems += [f"{block}: a command in a block that has none: {line}"
                                      for line in block.lines if COMMAND.match(line)]

    def test_files_that_the_text_names_exist(self):
        for page in self.pages:
            for number, code in page.inline_code():
                name = code.split()[0].rstrip(",.;:")
                if not re.match(rf"({'|'.join(FOLDERS)})/", name) or PATTERN.search(name):
                    continue
                paths = [base / name for base in (pages.ROOT, page.path.parent)]
                if not any(path.exists() or list(path.parent.glob(path.name + ".*"))
                           or list(path.parent.glob(path.name + "*.cpp")) for path in paths):
                    self.complain(page, number, f"`{name}` does not exist")

    def test_commands_that_the_text_names_exist(self):
        verbs = command_line_verbs()
        self.assertIn("board list", verbs)
        first = {verb.split()[0] for verb in verbs}
        for page in self.pages:
            for number, code in page.inline_code():
                words = code.split()
                if len(words) < 2 or words[0] not in ("qorlixctl", "tools/ctl"):
                    continue
                words = [word for word in words[1:] if not word.startswith("-")]
                if words and not (" ".join(words[:2]) in verbs or words[0] in verbs
                                  or (words[0] in first and len(words) == 1)):
                    self.complain(page, number, f"`{code}`: no such command")

    def test_tests_that_the_text_names_exist(self):
        real, all_of_them = tests_of(pages.ROOT / "tests/e2e"), tests_of(pages.ROOT)
        count = 0
        for page in self.pages:
            for number, code in page.inline_code():
                found = re.fullmatch(r"(e2e: )?([A-Z]\w*Test(?:\.\w+)?)", code)
                if not found:
                    continue
                count += 1
                if found[2] not in (real if found[1] else all_of_them):
                    self.complain(page, number, f"`{code}`: no such test")
        self.assertGreater(count, 100)


if __name__ == "__main__":
    unittest.main()
