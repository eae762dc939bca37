#!/usr/bin/env python3
"""Fails when the plain C interface is not what its parts say.

Header and export list name the same functions, and the scripts among the examples, which nothing
compiles, use no others. The Python ones are compiled.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
CAPI = ROOT / "client" / "capi"


def main() -> int:
    header = "".join(path.read_text() for path in sorted(CAPI.glob("qorlix*.h")))
    declared = set(re.findall(r"QORLIX_CALL\s+(qorlix_\w+)\(", header))
    exported = set(re.findall(r"^  (qorlix_\w+)$", (CAPI / "qorlixclient.def").read_text(),
                              re.MULTILINE))
    problems = [f"{name}: declared, but not exported" for name in sorted(declared - exported)]
    problems += [f"{name}: exported, but not declared" for name in sorted(exported - declared)]
    scripts = sorted((ROOT / "examples" / "script").iterdir())
    for path in scripts:
        text = path.read_text()
        for name in sorted(set(re.findall(r"\bqorlix_\w+", text)) - declared):
            problems.append(f"{path.name}: uses {name}, which does not exist")
        if path.suffix == ".py":
            try:
                compile(text, path.name, "exec")
            except SyntaxError as error:
                problems.append(f"{path.name}:{error.lineno}: {error.msg}")
    if not declared or not scripts:
        problems.append("there is no header, or no script")
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
