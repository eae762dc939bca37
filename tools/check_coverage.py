#!/usr/bin/env python3
"""Holds what was counted against the goals, and the lines that nothing ran against their reasons.

    tools/check_coverage.py build/coverage/all.json docs/coverage.md

The page explains lines in tables whose rows begin with a file and one of its lines, both in code
marks. A reason that no line needs any more is a failure as well.
"""
import collections
import json
import pathlib
import re
import sys

LINES = 95.0
BRANCHES = 90.0
ROOT = pathlib.Path(__file__).resolve().parent.parent
ROW = re.compile(r"^\| `([^`]+)` \| (`+)(.+?)\2 \|")


def reasons(page: pathlib.Path) -> set:
    found = set()
    for line in page.read_text(encoding="utf-8").splitlines():
        row = ROW.match(line)
        if row:
            found.add((row.group(1), row.group(3).strip().replace("\\|", "|")))
    return found


def percent(part: int, whole: int) -> float:
    return 100.0 * part / whole if whole else 100.0


def main() -> int:
    counted = json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))
    explained = reasons(pathlib.Path(sys.argv[2])) if pathlib.Path(sys.argv[2]).exists() else set()
    used = set()
    folders = collections.defaultdict(lambda: [0, 0, 0, 0])
    unexplained = []
    for file in counted["files"]:
        name = file["file"]
        source = (ROOT / name).read_text(encoding="utf-8").splitlines()
        sums = folders[name.split("/")[0]]
        for line in file["lines"]:
            if line.get("gcovr/noncode"):
                continue
            sums[1] += 1
            sums[0] += line["count"] > 0
            for branch in line["branches"]:
                sums[3] += 1
                sums[2] += branch["count"] > 0
            if line["count"] > 0:
                continue
            text = source[line["line_number"] - 1].strip()
            if (name, text) in explained:
                used.add((name, text))
            else:
                unexplained.append(f"{name}:{line['line_number']}: {text}")

    print("| Folder | Lines | Branches |\n|---|---|---|")
    total = [0, 0, 0, 0]
    for name, sums in sorted(folders.items()):
        total = [a + b for a, b in zip(total, sums)]
        print(f"| `{name}/` | {percent(*sums[:2]):.1f} % of {sums[1]} "
              f"| {percent(*sums[2:]):.1f} % of {sums[3]} |")
    lines, branches = percent(*total[:2]), percent(*total[2:])
    print(f"| all | {lines:.1f} % of {total[1]} | {branches:.1f} % of {total[3]} |")

    stale = sorted(explained - used)
    for text in unexplained:
        print(f"not run, and not explained: {text}")
    for name, text in stale:
        print(f"explained, but run or gone: {name}: {text}")
    if lines < LINES:
        print(f"below {LINES} % of lines")
    if branches < BRANCHES:
        print(f"below {BRANCHES} % of branches")
    return 1 if unexplained or stale or lines < LINES or branches < BRANCHES else 0


if __name__ == "__main__":
    sys.exit(main())
