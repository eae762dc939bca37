#!/usr/bin/env python3
"""Fails when a file includes what its layer may not know.

The layers stand in docs/architecture.md: a file includes its own folder and lower rows only, and
the command folders of one row never include each other. Files of a folder's CORE list, and headers
outside platform/, do not include <windows.h>.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# What each folder may include besides itself. A name with a slash is a single header.
CONTRACT = ["server/QorlixSRVPipe.h", "server/PipeInstance.h", "server/SrvResult.h",
            "server/CommandCode.h", "server/BCLock.h", "server/StrictProfile.h"]
PRIMITIVES = ["registry/RegistryOperation.h", "registry/RegistryPolicy.h",
              "registry/ProductInformation.h", "registry/OsName.h"]
LOW = ["platform", "trace"]
# What a reader of traces shares with their writer: layouts and arithmetic, nothing that writes.
TRACE_FORMATS = ["trace/TraceConfig.h", "trace/TraceFilter.h", "trace/TraceHost.h",
                 "trace/TraceRecord.h", "trace/TraceRing.h"]
COMMANDS = LOW + CONTRACT + PRIMITIVES + ["codec"]
ALLOWED = {
    "platform": [],
    "trace": ["platform"],
    "timer": LOW,
    "codec": LOW + CONTRACT,
    "registry": COMMANDS,
    "board": COMMANDS,
    "actions": COMMANDS,
    "maintenance": COMMANDS,
    "server": COMMANDS + ["timer", "board/boardsvc32.h", "actions/RestartResults.h", "maintenance"],
    "client": ["codec/Wire.h", "server/CommandCode.h", "server/SrvResult.h"],
    "traceview": ["platform", "client/CommandInfo.h"] + TRACE_FORMATS,
    "doctor": ["platform", "client", "traceview"],
    "cli": ["client", "traceview", "doctor", "trace/TraceConfig.h", "trace/TraceHost.h",
            "platform/AsciiCase.h"],
    "standins": ["board/boardsvc32.h"],
}
# The contract headers hold declarations only and stand below everything that uses them.
CONTRACT_MAY = ["platform/WinTypes.h"] + CONTRACT

# What programs outside the repository include.
PUBLIC = {"client/capi/qorlixclient.h", "client/capi/qorlixcommands.h"}
PUBLIC_NAMES = {name.split("/")[-1] for name in PUBLIC}

INCLUDE = re.compile(r'^\s*#\s*include\s+([<"])([^>"]+)[>"]', re.MULTILINE)
FREE = {"tests", "bench", "fuzz"}  # may look at everything


def is_test(path: pathlib.Path) -> bool:
    return path.stem.endswith(("Test", "Fixture")) or "testing" in path.parts


def core_files(folder: pathlib.Path) -> set:
    """Files in the CORE list of a folder's CMakeLists.txt."""
    lists = folder / "CMakeLists.txt"
    if not lists.exists():
        return set()
    core = re.search(r"\bCORE\b([^)]*?)(?:\b(?:WIN32|TESTS|WIN32_TESTS|NATIVE_TESTS)\b|\))",
                     lists.read_text())
    return set(core.group(1).split()) if core else set()


def may_include(name: str, folder: str, included: str) -> bool:
    top = included.split("/")[0]
    if name in CONTRACT:
        return included in CONTRACT_MAY
    return top == folder or top in ALLOWED[folder] or included in ALLOWED[folder]


def problems() -> list:
    found = []
    for folder in ALLOWED:
        core = core_files(ROOT / folder)
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix not in (".h", ".cpp") or is_test(path):
                continue
            name = path.relative_to(ROOT).as_posix()
            for kind, included in INCLUDE.findall(path.read_text(errors="replace")):
                if name in PUBLIC and included in PUBLIC_NAMES:
                    continue  # they are handed out, and then stand in one folder
                if kind == '"':
                    if not (ROOT / included).exists() and "/" not in included:
                        found.append(f"{name}: include project headers by path from the root: "
                                     f"{included}")
                    elif not may_include(name, folder, included):
                        found.append(f"{name}: may not include {included}")
                elif included == "windows.h":
                    if path.suffix == ".h" and name != "platform/WinTypes.h":
                        found.append(f"{name}: a header may not need <windows.h>")
                    if path.suffix == ".cpp" and path.name in core:
                        found.append(f"{name}: listed as CORE but includes <windows.h>")
    for path in ROOT.iterdir():
        if path.is_dir() and list(path.glob("*.cpp")) and path.name not in ALLOWED | dict.fromkeys(
                FREE):
            found.append(f"{path.name}/: this folder has no place among the layers")
    return found


if __name__ == "__main__":
    lines = problems()
    print("\n".join(lines))
    sys.exit(1 if lines else 0)
