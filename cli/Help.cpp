#include "cli/Help.h"

#include <cstdio>

#include "cli/ActionHelp.h"
#include "cli/BoardHelp.h"
#include "cli/TraceHelp.h"

#ifndef QORLIX_VERSION
#error "the build tells the version"
#endif

namespace cli {
namespace {

constexpr char kIntroduction[] =
    "qorlixctl talks to QorlixSRV, the privileged helper server of the communication stack, over\n"
    "its local pipe: it starts and stops the server, edits the stack's part of the registry "
    "through\n"
    "it, shows boards and devices, installs and restarts them, sends it any request, and reads "
    "its\n"
    "trace.\n"
    "\n"
    "usage: qorlixctl [OPTIONS] COMMAND [ARGUMENTS]\n";

constexpr char kOptions[] =
    "Options, anywhere on the line:\n"
    "  --json             write one JSON object, in ASCII, instead of text\n"
    "  --timeout SECONDS  wait that long for a connection, and again for the reply (10)\n"
    "  --pipe NAME        talk to another pipe than \\\\.\\pipe\\QorlixSRVPIPE32\n"
    "  --help             explain the program, or the command\n"
    "  --version          say which version this is\n"
    "  --                 what follows are arguments, even if it begins with --\n";

constexpr char kExitCodes[] =
    "Exit codes:\n"
    "  0  the server did it: its result is 0\n"
    "  1  the server answered another result, or its process ended before it was ready; or "
    "doctor\n"
    "     found an error, or decode no whole message\n"
    "  2  the command line is wrong, or names what is not there; nothing was sent\n"
    "  3  the server was not reached, was busy, or did not send a whole reply\n";

constexpr char kFirstSteps[] =
    "First steps, in an elevated command prompt beside QorlixSRV.exe:\n"
    "  qorlixctl start\n"
    "  qorlixctl reg create SOFTWARE\\Vesmark\\NORVA\\Demo\n"
    "  qorlixctl reg set SOFTWARE\\Vesmark\\NORVA\\Demo Greeting \"Hello there\"\n"
    "  qorlixctl reg get SOFTWARE\\Vesmark\\NORVA\\Demo Greeting\n"
    "  qorlixctl stop\n"
    "\n"
    "'qorlixctl COMMAND --help' explains a command, with examples.\n";

constexpr char kJson[] =
    "With --json the output is one line: an object with command, what the command adds, ok, "
    "result\n"
    "(code, name, text, origin) and perhaps a hint. Texts of the server, which are in the ANSI "
    "code\n"
    "page of the system, become Unicode, with \\u escapes outside ASCII; the data of values is "
    "there in\n"
    "hex, too, because not every byte is a character. Usage errors, help and --version are text in "
    "any\n"
    "case.\n";

constexpr char kRegistry[] =
    "The reg commands work below HKEY_LOCAL_MACHINE, on paths such as "
    "SOFTWARE\\Vesmark\\NORVA\\Demo,\n"
    "without a leading backslash. Reading (ls, values, get) works everywhere; changes are "
    "permitted\n"
    "below SOFTWARE\\Vesmark\\NORVA only, and values are written as text.\n";

constexpr struct {
  std::string_view group;
  const char* example;
  const char* text;
} kGroups[] = {
    {"reg", "reg get", kRegistry},
    {"board", "board installed", kBoard},
    {"device", "device state", kDevice},
    {"driver", "driver install", kDriver},
    {"ip", "ip add", kIp},
    {"trace", "trace dump", kTraceGroup},
};

std::string UsageOf(const Subcommand& subcommand) {
  std::string usage = subcommand.name;
  if (*subcommand.arguments != '\0') usage = usage + ' ' + subcommand.arguments;
  return usage;
}

// A line for each subcommand whose name begins so.
std::string Summaries(std::string_view beginning) {
  std::string lines;
  for (const Subcommand& subcommand : Subcommands()) {
    if (!std::string_view(subcommand.name).starts_with(beginning)) continue;
    char line[160];
    (void)std::snprintf(line, sizeof(line), "  %-27s %s\n", UsageOf(subcommand).c_str(),
                        subcommand.summary);
    lines += line;
  }
  return lines;
}

}  // namespace

std::string OverallHelp() {
  return std::string(kIntroduction) + "\nCommands:\n" + Summaries("") + '\n' + kOptions + '\n' +
         kJson + '\n' + kExitCodes + '\n' + kFirstSteps;
}

std::string GroupHelp(const std::string& group) {
  std::string help =
      "usage: qorlixctl " + group + " COMMAND [ARGUMENTS]\n\n" + Summaries(group + ' ');
  for (const auto& known : kGroups) {
    if (known.group != group) continue;
    help += std::string("\n") + known.text + "\n'qorlixctl " + known.example +
            " --help', for example, explains one of them.\n";
  }
  return help;
}

std::string SubcommandHelp(const Subcommand& subcommand) {
  std::string help = "usage: qorlixctl " + UsageOf(subcommand);
  if ((subcommand.options & kTakesBase) != 0) help += " [--base [ROOT]]";
  if ((subcommand.options & kTakesServer) != 0) help += " [--server PATH] [--stay]";
  if ((subcommand.options & kTakesReport) != 0) help += " -o OUT [--title TEXT] [--force]";
  if ((subcommand.options & kTakesFor) != 0) help += " [--for SECONDS]";
  if ((subcommand.options & kTakesLanguage) != 0) help += " [--language EXT]";
  if ((subcommand.options & kTakesBoard) != 0) help += " [--board BOARD]";
  if ((subcommand.options & kTakesMode) != 0) help += " [--mode N]";
  if ((subcommand.options & kTakesEvent) != 0) {
    help += " [--event EVENT] [--wait SECONDS] [--fetch EVENT]";
  }
  if ((subcommand.options & kTakesDecode) != 0) help += " [--command NAME] [--reply]";
  help += std::string(" [OPTIONS]\n\n") + subcommand.summary + ".\n\n" + subcommand.details;
  return help + '\n' + kOptions;
}

std::string VersionLine() { return "qorlixctl " QORLIX_VERSION "\n"; }

}  // namespace cli
