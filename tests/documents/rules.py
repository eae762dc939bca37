"""Commands of the documents that are not run as they stand, each with the reason and with what is
run in their place, so that what they name exists all the same. All other commands are run."""
import re

# What stands in a command : what is run instead.
SHORTER = {"--for 60": "--for 1"}


def targets(preset: str, names: str) -> str:
    query = f"ninja -C build/{preset} -t query {' '.join(names.split(','))}" if names else "true"
    return f"""cmake --list-presets=build | grep -q '"{preset}"' && {query}"""


def part_of_test(command: str) -> str:
    return f"grep -qF '={command}\"' test"


def help_names(match: re.Match) -> str:
    """The PowerShell line's verb stands in the help, its options in the help of the verb."""
    words = match.group(1).split()
    options = "".join(f" && grep -q -e '{word}\\b' listed" for word in words
                      if word.startswith("--"))
    return f"tools/ctl help {words[0]} > listed 2>&1{options}"


RULES = [
    # (command, why it is not run, what is run instead)
    (r"\./test", "this is a part of it", lambda _: "bash -n test && test -x test"),
    (r"\./run", "sets up and builds, which is done when this runs; what it does then is run",
     lambda _: "test -x run && grep -q '^tools/tour.sh ' run && tools/tour.sh --serve"),
    (r"tools/build\.sh ([\w-]+)(?::(\S+))?", "builds, beside the other tests of the same build",
     lambda m: targets(m[1], m[2] or "")),
    (r"cmake --preset ([\w-]+)", "configures what the other tests are run from",
     lambda m: targets(m[1], "")),
    (r"cmake --build --preset ([\w-]+) --target (\w+)", "builds, as above",
     lambda m: targets(m[1], m[2])),
    (r"ctest .*", "runs tests that run beside this one: they are listed",
     lambda m: f"{m[0]} -N > listed && ! grep -q 'Total Tests: 0' listed"),
    (r".*(tools/wine-run\.sh|build/native-asan/bin/\w+_test).*",
     "a program of tests that CTest runs: its tests are listed",
     lambda m: m[0].replace("QORLIX_DISPLAY=1 ", "") +
     " --gtest_list_tests > listed 2>&1 && grep -q '^  ' listed"),
    (r"tools/run_tests\.py (\S+)", "runs what runs this", lambda m:
     f"tools/run_tests.py --help >/dev/null && test -e {m[1]}/CTestTestfile.cmake"),
    (r"tools/check_\w+\.\w+.*", "a check that ./test makes by itself",
     lambda m: part_of_test(m[0]) + f" && test -x {m[0].split()[0]}"),
    (r"build/native-asan/bin/(\w+Fuzzer) .*", "fuzzers are not part of the ordinary build",
     lambda m: targets("native-asan", m[1])),
    (r"bench/run\.sh *(--\w+)? *(\S+)?", "takes minutes, and a quiet machine", lambda m:
     f"test -x bench/run.sh && grep -q -e '    {m[1] or '--quick'})' bench/run.sh"
     f" && test -e {m[2] or '.'}"),
    (r"(?:lib /def:(\S+)|cl /I (\S+)) .*", "needs MSVC", lambda m:
     "test -e " + (m[1] or m[2]).replace("\\", "/")),
    (r"(?:py -3-32|.*powershell\.exe .*-File) (\S+)", "needs an interpreter of Windows", lambda m:
     "test -e examples/script/" + m[1]),
]
POWERSHELL = (r"qorlixctl (.*)|\$ended.*|\(Start-Process .*", "needs PowerShell",
              lambda m: help_names(m) if m[1] else "true")


def instead(prompt: str, command: str):
    """None, or (reason, shell command to run instead)."""
    for pattern, reason, build in [POWERSHELL] if prompt == "PS>" else RULES:
        match = re.fullmatch(pattern, command)
        if match:
            return reason, build(match)
    return None
