"""Reads and writes a value through qorlixclient.dll. Needs a 32-bit Python, because the library is
a 32-bit one, and the library beside this file, in the search path, or where the argument says.

    py -3-32 registry.py [LIBRARY]
"""
import ctypes
import os
import sys

KEY = r"SOFTWARE\Vesmark\NORVA\Demo"
OK, ANSWERED = 0, 1
# Texts are in the ANSI code page. Python has it on Windows only; elsewhere there is no server, and
# a library for trials at most.
ANSI = "mbcs" if sys.platform == "win32" else "latin-1"


class TextValue(ctypes.Structure):
    # A pointer rather than c_char_p, which would end at the first zero byte.
    _fields_ = [("text", ctypes.POINTER(ctypes.c_char)), ("size", ctypes.c_uint32),
                ("length", ctypes.c_uint32)]

    def value(self) -> str:
        return ctypes.string_at(self.text, self.size).decode(ANSI)


def load() -> ctypes.CDLL:
    here = os.path.join(os.path.dirname(os.path.abspath(__file__)), "qorlixclient.dll")
    found = here if os.path.exists(here) else "qorlixclient.dll"
    library = ctypes.CDLL(sys.argv[1] if len(sys.argv) > 1 else found)
    client, text = ctypes.c_void_p, ctypes.c_char_p
    for name, result, arguments in (
            ("qorlix_open", client, [text]),
            ("qorlix_close", None, [client]),
            ("qorlix_code", ctypes.c_uint32, [client]),
            ("qorlix_text", text, [client]),
            ("qorlix_reg_create_key", ctypes.c_int32, [client, text]),
            ("qorlix_reg_set_value", ctypes.c_int32, [client, text, text, text]),
            ("qorlix_reg_get_value", ctypes.c_int32,
             [client, text, text, ctypes.POINTER(TextValue)])):
        function = getattr(library, name)
        function.restype, function.argtypes = result, arguments
    return library


def ansi(text: str) -> bytes:
    return text.encode(ANSI)


def main() -> int:
    qorlix = load()
    client = qorlix.qorlix_open(None)

    def check(status: int) -> None:
        if status != OK:
            who = "server" if status == ANSWERED else "client"
            sys.exit(f"{who}: {qorlix.qorlix_text(client).decode()} ({qorlix.qorlix_code(client)})")

    try:
        check(qorlix.qorlix_reg_create_key(client, ansi(KEY)))
        check(qorlix.qorlix_reg_set_value(client, ansi(KEY), b"Mode", b"fast"))
        found = TextValue()
        check(qorlix.qorlix_reg_get_value(client, ansi(KEY), b"Mode", ctypes.byref(found)))
        print("Mode is", found.value())
    finally:
        qorlix.qorlix_close(client)
    return 0


if __name__ == "__main__":
    sys.exit(main())
