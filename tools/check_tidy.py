#!/usr/bin/env python3
"""Runs clang-tidy over the portable product code, with the compile commands of a native build.

What was found clean is remembered by its preprocessed text, so a warm run costs little.
usage: tools/check_tidy.py BUILD_DIRECTORY
"""
import concurrent.futures
import hashlib
import json
import os
import pathlib
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def is_product(path: pathlib.Path) -> bool:
    if not path.is_relative_to(ROOT):
        return False
    name = path.relative_to(ROOT)
    return not (name.stem.endswith("Test") or "testing" in name.parts or
                name.parts[0] in ("tests", "build", "fuzz"))


def stamp_of(entry: dict) -> str:
    words = shlex.split(entry["command"])
    out = words.index("-o")
    words = [w for i, w in enumerate(words) if i not in (out, out + 1) and w != "-c"]
    text = subprocess.run(words + ["-E", "-P"], cwd=entry["directory"], capture_output=True).stdout
    return hashlib.sha256((ROOT / ".clang-tidy").read_bytes() + text).hexdigest()[:32]


def tidy(build: pathlib.Path, entry: dict) -> str:
    stamps = build / "tidy-stamps"
    stamps.mkdir(exist_ok=True)
    stamp = stamps / stamp_of(entry)
    if stamp.exists():
        return ""
    done = subprocess.run(["clang-tidy", "--quiet", "-p", build, entry["file"]],
                          capture_output=True, text=True)
    if done.returncode == 0:
        stamp.touch()
        return ""
    return done.stdout or done.stderr


def main() -> int:
    build = pathlib.Path(sys.argv[1]).resolve()
    # A file that several programs compile is looked at once.
    entries = list({e["file"]: e for e in json.loads((build / "compile_commands.json").read_text())
                    if is_product(pathlib.Path(e["file"]))}.values())
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        findings = [text for text in pool.map(lambda e: tidy(build, e), entries) if text]
    print("\n".join(findings))
    return 1 if findings or not entries else 0


if __name__ == "__main__":
    sys.exit(main())
