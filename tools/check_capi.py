#!/usr/bin/env python3
"""Fails when the plain C interface is not what its parts say.

Header and export list name the same functions, and the scripts among the examples use no others.
What the PowerShell script declares, which nothing here compiles, is compared with the header: calling
convention, result, arguments and structure. The Python one is run by tests/script.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
CAPI = ROOT / "client" / "capi"

# What a script may write for a type of the header.
IN_CSHARP = {
    "void": {"void"}, "uint32_t": {"uint"}, "int32_t": {"int"}, "qorlix_status": {"int"},
    "const char*": {"string", "IntPtr"}, "qorlix_client*": {"IntPtr"},
    "const qorlix_client*": {"IntPtr"}, "qorlix_text_value*": {"out TextValue"}}


def c_arguments(text: str) -> list:
    """The types of "const char* key, uint32_t index"."""
    words = [" ".join(one.split()) for one in text.split(",") if one.strip() != "void"]
    return [re.sub(r"\s*\b\w+$", "", one) for one in words]


def compare_types(name: str, csharp: list, c: list) -> list:
    if len(csharp) != len(c):
        return [f"{name}: {len(csharp)} of {len(c)} arguments or members"]
    return [f"{name}: {mine} for {theirs}" for mine, theirs in zip(csharp, c)
            if mine not in IN_CSHARP.get(theirs, set())]


def check_powershell(script: str, header: str) -> list:
    """What the C# in a PowerShell script declares otherwise than the header."""
    functions = {name: (" ".join(result.split()), c_arguments(arguments))
                 for result, name, arguments in re.findall(
                     r"^([\w ]+?\*?) QORLIX_CALL\s+(qorlix_\w+)\(([^)]*)\)", header, re.MULTILINE)}
    problems = []
    declared = re.findall(r"\[DllImport\(([^\]]*)\)\]\s*public static extern (\w+) (\w+)\(([^)]*)\)",
                          script)
    for attributes, result, name, arguments in declared:
        mine = [re.sub(r"\s*\b\w+$", "", " ".join(one.split())) for one in arguments.split(",")]
        wanted, types = functions.get(name, ("?", []))
        problems += compare_types(name, mine, types)
        # A result that is a string would be freed by the caller.
        if result not in IN_CSHARP.get(wanted, set()) - {"string"}:
            problems.append(f"{name}: returns {result} for {wanted}")
        if "CallingConvention = C" not in attributes:
            problems.append(f"{name}: is not declared as __cdecl")
        if "string" in mine and "CharSet = CharSet.Ansi" not in attributes:
            problems.append(f"{name}: texts are not declared as ANSI")
    if len(declared) != len(re.findall(r"\bextern\b", script)):
        problems.append("a declaration is not understood")
    if not re.search(r"CallingConvention C = CallingConvention\.Cdecl;", script):
        problems.append("C does not stand for __cdecl")
    called = set(re.findall(r"\]::(qorlix_\w+)\(", script))
    problems += [f"{name}: called, but not declared"
                 for name in sorted(called - {one[2] for one in declared})]

    record = re.search(r"typedef struct qorlix_text_value \{(.*?)\}", header, re.DOTALL).group(1)
    record = re.sub(r"/\*.*?\*/", "", record, flags=re.DOTALL)
    theirs = c_arguments(record.replace(";", ",").rstrip().rstrip(","))
    mine = re.search(r"LayoutKind\.Sequential\)\]\s*public struct TextValue \{(.*?)\bpublic override",
                     script, re.DOTALL).group(1)
    members = re.findall(r"public (\w+) \w+;", mine)
    return problems + compare_types("TextValue", members, theirs)


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
        if path.suffix == ".ps1":
            problems += [f"{path.name}: {one}" for one in check_powershell(text, header)]
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
