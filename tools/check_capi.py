#!/usr/bin/env python3
"""Fails when the plain C interface is not what its parts say.

Header and export list name the same functions, and the scripts among the examples use no others.
What the scripts declare is compared with the header: calling convention, results, arguments and
structure. That the Python one works is shown by tests/script; nothing here runs the other.
"""
import ctypes
import importlib.util
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


# The same for Python.
IN_PYTHON = {
    "void": {None}, "uint32_t": {ctypes.c_uint32}, "int32_t": {ctypes.c_int32},
    "qorlix_status": {ctypes.c_int32}, "const char*": {ctypes.c_char_p},
    "qorlix_client*": {ctypes.c_void_p}, "const qorlix_client*": {ctypes.c_void_p}}


def c_functions(header: str) -> dict:
    """name: (type of the result, types of the arguments)."""
    return {name: (" ".join(result.split()), c_arguments(arguments))
            for result, name, arguments in re.findall(
                r"^([\w ]+?\*?) QORLIX_CALL\s+(qorlix_\w+)\(([^)]*)\)", header, re.MULTILINE)}


def c_members(header: str, record: str) -> list:
    text = re.search(rf"typedef struct {record} \{{(.*?)\}}", header, re.DOTALL).group(1)
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.DOTALL)
    return c_arguments(text.replace(";", ",").rstrip().rstrip(","))


def c_arguments(text: str) -> list:
    """The types of "const char* key, uint32_t index"."""
    words = [" ".join(one.split()) for one in text.split(",") if one.strip() != "void"]
    return [re.sub(r"\s*\b\w+$", "", one) for one in words]


def compare_types(name: str, script: list, c: list, known: dict) -> list:
    if len(script) != len(c):
        return [f"{name}: {len(script)} of {len(c)} arguments or members"]
    return [f"{name}: {mine} for {theirs}" for mine, theirs in zip(script, c)
            if mine not in known.get(theirs, set())]


def check_powershell(script: str, header: str) -> list:
    """What the C# in a PowerShell script declares otherwise than the header."""
    functions = c_functions(header)
    problems = []
    declared = re.findall(r"\[DllImport\(([^\]]*)\)\]\s*public static extern (\w+) (\w+)\(([^)]*)\)",
                          script)
    for attributes, result, name, arguments in declared:
        mine = [re.sub(r"\s*\b\w+$", "", " ".join(one.split())) for one in arguments.split(",")]
        wanted, types = functions.get(name, ("?", []))
        problems += compare_types(name, mine, types, IN_CSHARP)
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

    mine = re.search(r"LayoutKind\.Sequential\)\]\s*public struct TextValue \{(.*?)\bpublic override",
                     script, re.DOTALL).group(1)
    members = re.findall(r"public (\w+) \w+;", mine)
    return problems + compare_types("TextValue", members, c_members(header, "qorlix_text_value"),
                                    IN_CSHARP)


class Recorder:
    """Takes the place of a loaded library, and keeps what is declared of its functions."""
    def __init__(self, *_):
        self.functions = {}

    def __getattr__(self, name):
        return self.functions.setdefault(name, type("Function", (), {})())


def check_python(path: pathlib.Path, header: str) -> list:
    """What a Python script declares otherwise than the header."""
    spec = importlib.util.spec_from_file_location(path.stem, path)
    script = importlib.util.module_from_spec(spec)
    sys.dont_write_bytecode = True
    spec.loader.exec_module(script)
    script.ctypes.CDLL = Recorder
    declared, functions = script.load().functions, c_functions(header)
    known = dict(IN_PYTHON, **{"qorlix_text_value*": {ctypes.POINTER(script.TextValue)}})
    problems = []
    for name, mine in declared.items():
        wanted, types = functions.get(name, ("?", []))
        problems += compare_types(name, mine.argtypes, types, known)
        if mine.restype not in known.get(wanted, set()):
            problems.append(f"{name}: returns {mine.restype} for {wanted}")
    called = set(re.findall(r"\.(qorlix_\w+)\(", path.read_text()))
    problems += [f"{name}: called, but not declared" for name in sorted(called - set(declared))]
    known["const char*"] = {ctypes.POINTER(ctypes.c_char)}
    members = [kind for _, kind in script.TextValue._fields_]
    return problems + compare_types("TextValue", members, c_members(header, "qorlix_text_value"), known)


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
            problems += [f"{path.name}: {one}" for one in check_python(path, header)]
    if not declared or not scripts:
        problems.append("there is no header, or no script")
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
