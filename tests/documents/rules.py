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


def options_exist(words: str, files: str) -> str:
    """Every option among the words is one for the script or the program's sources."""
    return " && ".join(["true"] + [f"grep -hv '^ *\\(#\\|//\\)' {files} | grep -q -e '{word}[\") ]'"
                                   for word in words.split() if word.startswith("--")])


LONG_RUNS = {"fuzz": "true", "hostile": targets("windows-x86", "hostile_suite,e2e_grammar_test"),
             "soak": targets("windows-x86", "soak"), "coverage": "true"}


def long_run(match: re.Match) -> str:
    """The script, its options, the programs that it builds; what begins with a capital is a fuzzer."""
    script, words = f"tools/{match[1]}.sh", match[2]
    fuzzers = " && ".join(["true"] + [
        f"test -d fuzz/corpus/{word} && " + targets("native-asan", word + "Fuzzer")
        for word in words.split() if word[0].isupper()])
    return (f"bash -n {script} && test -x {script} && {options_exist(words, script)} && "
            f"{LONG_RUNS[match[1]]} && {fuzzers}")


RULES = [
    # (command, why it is not run, what is run instead)
    (r"\./test", "this is a part of it", lambda _: "bash -n test && test -x test"),
    (r"\./run", "sets up and builds, which is done when this runs; what it does then is run",
     lambda _: "test -x run && grep -q '^tools/tour.sh ' run && tools/tour.sh --serve"),
    (r"tools/build\.sh((?: [\w-]+(?::\S+)?)+)", "builds, beside the other tests of the same build",
     lambda m: " && ".join(targets(*job.partition(":")[::2]) for job in m[1].split())),
    (r"cmake --preset ([\w-]+)", "configures what the other tests are run from",
     lambda m: targets(m[1], "")),
    (r"cmake --build --preset ([\w-]+) --target (\w+)", "builds, as above",
     lambda m: targets(m[1], m[2])),
    (r"ctest .*", "runs tests that run beside this one: they are listed",
     lambda m: f"{m[0]} -N > listed && ! grep -q 'Total Tests: 0' listed"),
    (r"tools/(fuzz|hostile|soak|coverage)\.sh\b(.*)", "builds, and runs for minutes", long_run),
    (r"tools/wine-run\.sh build/windows-x86/bin/(pipeload|codec_bench)\.exe(.*)",
     "takes a while, and a quiet machine", lambda m:
     f"{targets('windows-x86', m[1])} && {options_exist(m[2], 'bench/*.cpp')}"),
    (r"bench/count-requests\.sh( --trace)? (\S+)", "e2e_count_test does it, beside this one", lambda m:
     f"test -x bench/count-requests.sh && test -d {m[2]} && "
     + options_exist(m[1] or "", "bench/count-requests.sh")),
    (r".*(tools/wine-run\.sh|build/native-asan/bin/\w+_test).*",
     "a program of tests that CTest runs: its tests are listed",
     lambda m: re.sub(r"^(QORLIX_\w+=\w+ )+", "", m[0]) +
     " --gtest_list_tests > listed 2>&1 && grep -q '^  ' listed"),
    (r"tools/run_tests\.py (\S+)", "runs what runs this", lambda m:
     f"tools/run_tests.py --help >/dev/null && test -e {m[1]}/CTestTestfile.cmake"),
    (r"tools/check_\w+\.\w+.*", "a check that ./test makes by itself",
     lambda m: part_of_test(m[0]) + f" && test -x {m[0].split()[0]}"),
    (r"build/native-asan/bin/(\w+Fuzzer) .*", "is about an input that fails, and there is none",
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
