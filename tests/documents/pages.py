"""The documents: which there are, and their fenced blocks, headings and links.

A block's info string says what is in it; a reader does not see it:

    sh       commands for a Unix shell, from the root of the sources
    bat      commands for a Windows prompt
    console  a session: "> " is a Windows prompt, "PS> " PowerShell, "$ " a Unix shell, and what
             stands behind a command is its output; "..." leaves lines out
    c, cpp   code
    (none)   anything without a command
"""
import dataclasses
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
COMMANDS = {"sh", "bat", "console"}
CODE = {"c", "cpp"}


def dead_links(pages: list) -> tuple:
    """What is wrong with the pages' links, and how many there are."""
    by_path = {page.path: page for page in pages}
    problems, count = [], 0
    for page in pages:
        for number, link in page.links():
            count += 1
            path, anchor = page.target(link)
            if re.match(r"[a-z]+:", link):
                problems.append(f"{page.name}:{number}: {link} leads out of the sources")
            elif not path.exists():
                problems.append(f"{page.name}:{number}: {link} does not exist")
            elif anchor and (path not in by_path or anchor not in by_path[path].anchors):
                problems.append(f"{page.name}:{number}: {link}: no such heading")
    return problems, count


def paths() -> list:
    return [ROOT / name for name in ("README.md", "SECURITY.md", "CONTRIBUTING.md", "CHANGELOG.md")
            ] + sorted([*(ROOT / "docs").glob("*.md"), *(ROOT / "standins").rglob("*.md"),
                        *(ROOT / "installer").rglob("*.md")])


@dataclasses.dataclass
class Command:
    prompt: str  # "$", ">" or "PS>"
    text: str
    output: list  # lines; empty where none is shown


@dataclasses.dataclass
class Block:
    page: str  # its path from the root
    line: int
    section: str  # anchor of the heading above
    kind: str
    lines: list

    def __str__(self):
        return f"{self.page}:{self.line}"

    def commands(self) -> list:
        if self.kind == "console":
            return self._session()
        prompt = {"sh": "$", "bat": ">"}[self.kind]
        whole = re.sub(r"\\\n\s*", "", "\n".join(self.lines)).splitlines()
        return [Command(prompt, re.sub(r"\s{2,}#.*", "", line), []) for line in whole
                if line.strip() and not line.startswith("#")]

    def _session(self) -> list:
        found = []
        for line in self.lines:
            start = re.match(r"(PS>|>|\$) (.*)", line)
            if start:
                found.append(Command(start.group(1), start.group(2), []))
            elif not found:
                raise AssertionError(f"{self}: output without a command")
            else:
                found[-1].output.append(line)
        return found


def anchor_of(title: str) -> str:
    """The anchor that a heading gets: small letters, blanks to hyphens, no punctuation."""
    plain = re.sub(r"[`*]|\]\([^)]*\)", "", title).strip().lower()
    return re.sub(r"[^\w\- ]", "", plain).replace(" ", "-")


# It is delivered as the package's first page, where the same folders lie beside it.
PACKAGED = ROOT / "installer" / "README.md"


class Page:
    def __init__(self, path: pathlib.Path, root: pathlib.Path = ROOT):
        self.path = path
        self.folder = root if path == PACKAGED else path.parent  # what its links start from
        self.name = path.relative_to(root).as_posix()
        self.blocks, self.anchors, self.text = [], [], []  # text: (line number, line), no blocks
        block = None
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), start=1):
            fence = re.match(r"( *)```(\S*)$", line)
            if block is not None:
                if fence and not fence.group(2):
                    block = None
                else:
                    block.lines.append(line)
            elif fence:
                section = self.anchors[-1] if self.anchors else ""
                block = Block(self.name, number, section, fence.group(2), [])
                self.blocks.append(block)
            else:
                self.text.append((number, line))
                heading = re.match(r"#+ (.*)", line)
                if heading:
                    self._add_anchor(anchor_of(heading.group(1)))
        assert block is None, f"{self.name}: a block is not closed"

    def _add_anchor(self, anchor: str) -> None:
        same = sum(1 for one in self.anchors if re.fullmatch(re.escape(anchor) + r"(-\d+)?", one))
        self.anchors.append(f"{anchor}-{same}" if same else anchor)

    def target(self, link: str) -> tuple:
        """(path, anchor) that a link leads to."""
        name, _, anchor = link.partition("#")
        return (self.folder / name).resolve() if name else self.path, anchor

    def links(self) -> list:
        """(line number, target) of every link."""
        return [(number, target) for number, line in self.text
                for target in re.findall(r"\]\(([^)\s]+)\)", re.sub(r"`[^`]*`", "", line))]

    def inline_code(self) -> list:
        return [(number, code) for number, line in self.text
                for code in re.findall(r"`([^`]+)`", line)]
