#!/usr/bin/env python3
"""Looks into the ZIP of a build as somebody who got it: is all there, does the bill of materials
tell the truth, can a client be built with nothing else?"""
import argparse
import hashlib
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "documents"))
sys.dont_write_bytecode = True
import pages  # noqa: E402


class PackageTest(unittest.TestCase):
    build: pathlib.Path
    compiler: str

    @classmethod
    def setUpClass(cls):
        cls.work = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.work)
        packed = list((cls.build / "package").glob("*.zip"))
        assert len(packed) == 1, packed
        with zipfile.ZipFile(packed[0]) as archive:
            cls.entries = archive.infolist()
            archive.extractall(cls.work)
        cls.root = cls.work / packed[0].stem
        cls.names = sorted(path.relative_to(cls.root).as_posix() for path in cls.root.rglob("*")
                           if path.is_file())
        cls.bill = json.loads((cls.root / "QorlixSRV.spdx.json").read_text())

    def test_all_lies_in_one_folder_that_names_product_and_version(self):
        self.assertEqual([entry.name for entry in self.work.iterdir()], [self.root.name])
        self.assertRegex(self.root.name, r"^QorlixSRV-\d+\.\d+\.\d+-windows-x86$")

    def test_programs_documents_headers_and_stand_ins_are_there(self):
        for name in ["QorlixSRV.exe", "qorlixctl.exe", "README.md", "SECURITY.md", "CHANGELOG.md",
                     "docs/protocol.md", "docs/operations.md", "include/client/QorlixClient.h",
                     "lib/libqorlixclient_cpp.a", "include/qorlixclient.h",
                     "include/qorlixcommands.h", "lib/qorlixclient.dll", "lib/qorlixclient.def",
                     "lib/libqorlixclient.a", "docs/client.md", "examples/c/hello.c",
                     "examples/cpp/boards.cpp", "examples/script/registry.py",
                     "standins/README.md", "standins/drvinstx.dll",
                     "standins/noexport/drvinstx.dll", "standins/boardsvc32/boardsvc32.dll",
                     "standins/boardsvc32/README.md", "standins/boardsvc32/samples/plant.ini"]:
            self.assertIn(name, self.names)

    def test_its_documents_lead_nowhere_else(self):
        found = [pages.Page(path, self.root) for path in sorted(self.root.rglob("*.md"))]
        problems, count = pages.dead_links(found)
        self.assertEqual(problems, [])
        self.assertGreater(count, 50)

    def test_no_board_library_lies_where_the_server_would_find_it(self):
        self.assertNotIn("boardsvc32.dll", self.names)

    def test_nothing_of_the_tests_is_delivered(self):
        self.assertEqual([name for name in self.names
                          if "testing/" in name or "Test" in name or "gtest" in name], [])

    def test_the_installer_has_the_same_files_and_its_makers_licence(self):
        stage = self.build / "package" / "stage" / "setup"
        names = sorted(path.relative_to(stage).as_posix() for path in stage.rglob("*")
                       if path.is_file())
        self.assertEqual(names, sorted([*self.names, "licenses/nsis.txt"]))
        for name in self.names:
            if name != "QorlixSRV.spdx.json":
                self.assertEqual((stage / name).read_bytes(), (self.root / name).read_bytes(), name)

    def test_all_files_have_one_time(self):
        self.assertEqual(len({entry.date_time for entry in self.entries}), 1)

    def test_no_file_knows_where_it_was_built(self):
        source = pathlib.Path(__file__).resolve().parent.parent.parent
        for name in self.names:
            content = (self.root / name).read_bytes()
            for folder in {source, self.build, pathlib.Path.home()}:
                self.assertFalse(f"{folder}/".encode() in content, f"{folder} in {name}")

    def test_the_bill_lists_every_file_with_its_sums(self):
        listed = {}
        for entry in self.bill["files"]:
            sums = {one["algorithm"]: one["checksumValue"] for one in entry["checksums"]}
            listed[entry["fileName"]] = sums
        content = {f"./{name}": (self.root / name).read_bytes() for name in self.names
                   if name != "QorlixSRV.spdx.json"}
        self.assertEqual(listed, {name: {"SHA1": hashlib.sha1(data).hexdigest(),
                                         "SHA256": hashlib.sha256(data).hexdigest()}
                                  for name, data in content.items()})
        # SPDX 2.3, 7.9: SHA1 of all files' SHA1, sorted and without anything in between.
        code = hashlib.sha1("".join(sorted(hashlib.sha1(data).hexdigest()
                                           for data in content.values())).encode()).hexdigest()
        product = self.bill["packages"][0]
        self.assertEqual(product["packageVerificationCode"]["packageVerificationCodeValue"], code)

    def test_the_bill_has_what_its_format_asks_for(self):
        self.assertEqual(self.bill["spdxVersion"], "SPDX-2.3")
        self.assertEqual(self.bill["dataLicense"], "CC0-1.0")
        self.assertRegex(self.bill["documentNamespace"], r"^urn:uuid:[0-9a-f-]{36}$")
        self.assertRegex(self.bill["creationInfo"]["created"],
                         r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
        ids = ["SPDXRef-DOCUMENT"]
        for entry in [*self.bill["packages"], *self.bill["files"]]:
            self.assertRegex(entry["SPDXID"], r"^SPDXRef-[A-Za-z0-9.-]+$")
            self.assertTrue(entry["licenseConcluded"] and entry["copyrightText"])
            ids.append(entry["SPDXID"])
        self.assertEqual(len(ids), len(set(ids)))
        for relation in self.bill["relationships"]:
            self.assertIn(relation["spdxElementId"], ids)
            self.assertIn(relation["relatedSpdxElement"], ids)

    def test_our_own_licence_is_not_made_up(self):
        self.assertEqual(self.bill["packages"][0]["licenseDeclared"], "NOASSERTION")

    def test_the_bill_tells_what_is_linked_in(self):
        files = {entry["SPDXID"]: entry["fileName"] for entry in self.bill["files"]}
        inside = {}
        for relation in self.bill["relationships"]:
            if relation["relationshipType"] == "STATIC_LINK":
                component = relation["relatedSpdxElement"].removeprefix("SPDXRef-Package-")
                inside.setdefault(files[relation["spdxElementId"]], set()).add(component)
        programs = {f"./{name}" for name in self.names if name.endswith((".exe", ".dll", ".cpl"))}
        self.assertEqual(set(inside), programs)
        self.assertEqual(inside["./QorlixSRV.exe"],
                         {"gcc-runtime", "mingw-w64-crt", "winpthreads"})
        # Not the maps alone say so: a text of each is among the program's bytes.
        server = (self.root / "QorlixSRV.exe").read_bytes()
        for text in [b"Mingw-w64 runtime failure", b"runtime_error", b"winpthreads"]:
            self.assertTrue(text in server, text)
        licences = {package["name"]: package["licenseDeclared"]
                    for package in self.bill["packages"]}
        self.assertEqual(licences["winpthreads"], "MIT AND BSD-3-Clause")
        for package in self.bill["packages"]:
            self.assertIn("versionInfo", package)

    def build_client(self, source: pathlib.Path, *more: str):
        program = self.work / "client.exe"
        built = subprocess.run([self.compiler, "-Wall", "-Wextra", "-Werror",
                                f"-I{self.root}/include", "-x", *more[:2], source, "-x", "none",
                                f"-L{self.root}/lib", *more[2:], "-static", "-o", program],
                               capture_output=True, text=True)
        self.assertEqual(built.returncode, 0, built.stderr)
        program.unlink()

    def test_a_client_is_built_with_the_package_alone(self):
        self.build_client(pathlib.Path(__file__).resolve().parent / "client.cpp", "c++",
                          "-std=c++20", "-lqorlixclient_cpp", "-lssp")

    def test_the_examples_are_built_with_the_package_alone(self):
        for source in (self.root / "examples").rglob("*.c"):
            self.build_client(source, "c", "-std=c99", "-lqorlixclient")
        for source in (self.root / "examples").rglob("*.cpp"):
            self.build_client(source, "c++", "-std=c++20", "-lqorlixclient_cpp", "-lssp")

    def test_the_first_program_of_the_documents_is_built_as_they_say_with_the_package_alone(self):
        page = (self.root / "docs" / "client.md").read_text()
        programs = [block for block in re.findall(r"^```c\n(.*?)^```$", page, re.M | re.S)
                    if "int main" in block]
        self.assertEqual(len(programs), 1)
        # Those with a path of the sources are for whoever has them.
        lines = [line for line in re.findall(r"^i686-w64-mingw32-.*$", page, re.M)
                 if "build/" not in line]
        self.assertEqual([line.split()[-1] for line in lines], ["hello.exe", "client.exe"])
        with tempfile.TemporaryDirectory() as folder:
            package = pathlib.Path(folder, "package")
            shutil.copytree(self.root, package)
            (package / "hello.c").write_text(programs[0])
            shutil.copy(pathlib.Path(__file__).resolve().parent / "client.cpp", package)
            for line in lines:
                built = subprocess.run(line.split(), cwd=package, capture_output=True, text=True)
                self.assertEqual(built.returncode, 0, built.stderr)
                self.assertTrue((package / line.split()[-1]).exists())

    def test_every_header_stands_alone(self):
        headers = [name.removeprefix("include/") for name in self.names if name.endswith(".h")
                   and name.startswith("include/")]
        self.assertGreater(len(headers), 10)
        for name in headers:
            built = subprocess.run([self.compiler, "-std=c++20", "-Wall", "-Werror",
                                    "-fsyntax-only", f"-I{self.root}/include", "-x", "c++", "-"],
                                   input=f"#include <{name}>\n", capture_output=True, text=True)
            self.assertEqual(built.returncode, 0, built.stderr)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True, help="build directory")
    parser.add_argument("--compiler", required=True, help="that of the build")
    given, rest = parser.parse_known_args()
    PackageTest.build = given.build.resolve()
    PackageTest.compiler = given.compiler
    return 0 if unittest.main(argv=[sys.argv[0], *rest], exit=False).result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
