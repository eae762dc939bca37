#!/usr/bin/env python3
"""Runs examples/script/registry.py over a library of the plain C interface whose server is a script
of answers: what it declares, asks and prints is what the interface and the wire have."""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
KEY = "1B000000" + rb"SOFTWARE\Vesmark\NORVA\Demo".hex().upper()
MODE = "04000000" + b"Mode".hex().upper()
DONE = "0400 00000000"


def value(data: bytes) -> str:
    return f"{DONE} {len(data).to_bytes(4, 'little').hex()} {data.hex()} 04000000"


class ScriptTest(unittest.TestCase):
    library: str

    def run_example(self, *answers: str):
        """Returns the finished process and the requests that it has made."""
        with tempfile.TemporaryDirectory() as work:
            requests = pathlib.Path(work, "requests")
            done = subprocess.run([sys.executable, ROOT / "examples/script/registry.py", self.library],
                                  env=dict(os.environ, QORLIX_SCRIPTED_ANSWERS="\n".join(answers),
                                           QORLIX_SCRIPTED_REQUESTS=str(requests),
                                           PYTHONIOENCODING="utf-8"),
                                  capture_output=True, encoding="utf-8", timeout=60)
            return done, requests.read_text().split()

    def test_it_creates_writes_and_reads(self):
        done, requests = self.run_example(DONE, DONE, value(b"fast"))
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "Mode is fast\n", ""))
        self.assertEqual(requests, ["0200" + KEY,
                                    "0300" + KEY + MODE + "04000000" + b"fast".hex().upper(),
                                    "1600" + KEY + MODE])

    def test_a_value_ends_with_its_size_and_not_with_its_first_zero(self):
        done, _ = self.run_example(DONE, DONE, value(b"f\0\xe4"))
        self.assertEqual((done.returncode, done.stdout), (0, "Mode is f\0\u00e4\n"))

    def test_a_refusal_is_told_with_the_servers_code(self):
        done, requests = self.run_example("0400 05000000")
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr, r"^server: .+ \(5\)\n$")
        self.assertEqual(len(requests), 1)

    def test_a_server_that_is_gone_is_told_as_the_clients_failure(self):
        done, _ = self.run_example()
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr, r"^client: .+ \(\d+\)\n$")


if __name__ == "__main__":
    ScriptTest.library = sys.argv.pop(1)
    unittest.main()
