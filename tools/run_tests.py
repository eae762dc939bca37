#!/usr/bin/env python3
"""Runs the test programs of the build directories given and counts their tests.

CTest runs the programs; each GoogleTest program also writes what became of its single tests, so
that the closing line counts tests and not programs. A program that ends without such a report did
not come to its end, whatever its exit code says, and counts as one failure; a test that is a script
counts as one by its exit code.

Closes with the line "N passed, N failed" (", N skipped" where some were) and exits nonzero unless
something passed and nothing failed.
"""
import argparse
import concurrent.futures
import json
import os
import pathlib
import shutil
import subprocess
import sys
import xml.etree.ElementTree as ElementTree


def run_ctest(build: pathlib.Path, jobs: int) -> list:
    """Returns (program, passed, failed, skipped, output of a failure) for every test program."""
    reports = build / "test-reports"
    shutil.rmtree(reports, ignore_errors=True)
    reports.mkdir(parents=True)
    listing = json.loads(subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"],
                                        check=True, capture_output=True, text=True).stdout)
    windows = any("wine-run.sh" in word for test in listing["tests"]
                  for word in test.get("command", []))
    env = dict(os.environ, GTEST_OUTPUT=f"xml:{'Z:' if windows else ''}{reports}/")
    programs = {test["name"] for test in listing["tests"]
                if any(pathlib.Path(word).parent == build / "bin" for word in test["command"][:2])}
    junit = build / "ctest.xml"
    subprocess.run(["ctest", "--test-dir", build, "-j", str(jobs), "--timeout", "240",
                    "--output-junit", junit, "--output-on-failure"],
                   env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    results = []
    for case in ElementTree.parse(junit).getroot().iter("testcase"):
        name = case.get("name")
        program_failed = case.get("status") != "run"
        output = case.findtext("system-out") or ""
        report = reports / f"{name}.xml"
        passed = failed = skipped = 0
        try:
            for test in ElementTree.parse(report).getroot().iter("testcase"):
                if test.find("failure") is not None:
                    failed += 1
                elif test.find("skipped") is not None or test.get("status") == "notrun":
                    skipped += 1
                else:
                    passed += 1
        except (OSError, ElementTree.ParseError):
            program_failed = program_failed or name in programs
            passed = 0 if program_failed else 1
        if program_failed and failed == 0:
            failed = 1
        results.append((name, passed, failed, skipped, output))
    return results


def interesting(output: str) -> str:
    """What a reader of a failure needs of a program's output."""
    noise = ("[       OK", "[ RUN", "[-----")
    lines = [line for line in output.splitlines()
             if not line.startswith(noise) and ":err:eventlog:" not in line]
    return "\n".join(lines[-120:])


def run_check(check: str) -> tuple:
    """Returns (passed, failed, skipped) and what to print."""
    name, command = check.split("=", 1)
    done = subprocess.run(command, shell=True, capture_output=True, text=True)
    if done.returncode == 0:
        return (1, 0, 0), f"passed  {name}"
    return (0, 1, 0), f"FAILED  {name}\n{done.stdout}{done.stderr}"


def run_build(build: pathlib.Path, jobs: int) -> tuple:
    total = [0, 0, 0]
    lines = []
    for name, passed, failed, skipped, output in run_ctest(build.resolve(), jobs):
        total = [total[0] + passed, total[1] + failed, total[2] + skipped]
        state = "FAILED" if failed else "passed"
        lines.append(f"{state}  {build.name}/{name}: {passed} passed, {failed} failed")
        if failed:
            lines.append(interesting(output))
    return tuple(total), "\n".join(lines)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("builds", nargs="+", type=pathlib.Path, help="build directories")
    parser.add_argument("--jobs", type=int, default=(os.cpu_count() or 1) + 2,
                        help="programs at a time; many of them wait most of the time")
    parser.add_argument("--check", action="append", default=[], metavar="NAME=COMMAND",
                        help="one more test: a command that exits 0")
    arguments = parser.parse_args()

    # The checks one after another beside the programs: what waits leaves them the processor.
    total = [0, 0, 0]
    with concurrent.futures.ThreadPoolExecutor(1) as checker, \
            concurrent.futures.ThreadPoolExecutor(1) as tester:
        pending = [tester.submit(run_build, build, arguments.jobs) for build in arguments.builds]
        pending += [checker.submit(run_check, check) for check in arguments.check]
        for done in concurrent.futures.as_completed(pending):
            counts, text = done.result()
            total = [a + b for a, b in zip(total, counts)]
            print(text, flush=True)
    closing = f"{total[0]} passed, {total[1]} failed"
    print(closing + (f", {total[2]} skipped" if total[2] else ""))
    return 0 if total[0] > 0 and total[1] == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
