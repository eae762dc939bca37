#include "cli/Subcommands.h"

#include <iterator>

#include "cli/ActionHelp.h"
#include "cli/Actions.h"
#include "cli/BoardHelp.h"
#include "cli/DecodeHelp.h"
#include "cli/DoctorHelp.h"
#include "cli/TraceHelp.h"

namespace cli {
namespace {

constexpr int kNoLimit = 1 << 20;

constexpr char kStart[] =
    "Creates the event that the server sets once its pipe exists, starts the server, and waits "
    "for\n"
    "the event. The server runs on when qorlixctl has ended. It has the rights of whoever starts\n"
    "it, so start it from an elevated command prompt: without administrator rights it cannot "
    "change\n"
    "the registry.\n"
    "\n"
    "  --server PATH  the program to start, if it is not QorlixSRV.exe beside qorlixctl\n"
    "  --stay         wait until the server has ended, too, and tell its exit code; with --json "
    "as\n"
    "                 a second object. 1 is that of a server that was stopped.\n"
    "\n"
    "When the server ends before it is ready, its exit code is told: 183 means that another "
    "server\n"
    "is running already, 1 that its pipe could not be created, others are codes of Windows. One\n"
    "that is not ready in time is left running.\n"
    "\n"
    "Ready means that the pipe exists. Before it serves anybody the server still looks after the\n"
    "configuration and starts looking for hardware; the first request waits for that.\n"
    "\n"
    "Examples:\n"
    "  qorlixctl start\n"
    "  qorlixctl start --server \"C:\\Program Files\\Stack\\QorlixSRV.exe\" --timeout 30\n";

constexpr char kPing[] =
    "Sends NoOperation and says how long the answer took. It tells a server that is not running\n"
    "from one whose 64 connections are all in use, and from a pipe that does not admit the user.\n"
    "\n"
    "Example:\n"
    "  qorlixctl ping --timeout 2\n";

constexpr char kStop[] =
    "Sends StopServer with its confirmation value, 253, and waits until the server has ended. The\n"
    "server closes the connections of all its clients, this one without a reply. To see what it\n"
    "answers without the confirmation, send it by hand: qorlixctl raw FD00 00000000\n"
    "\n"
    "Example:\n"
    "  qorlixctl stop\n";

constexpr char kRegLs[] =
    "Lists the subkeys of a key, one to a line. PATH begins below HKEY_LOCAL_MACHINE, without a\n"
    "leading backslash; every key there can be read, not only those of the stack. The server asks\n"
    "for full access to the key it lists, so it answers 5 for keys that it may only read.\n"
    "\n"
    "Example:\n"
    "  qorlixctl reg ls SOFTWARE\\Vesmark\\NORVA\n";

constexpr char kRegValues[] =
    "Lists the values of a key with their data, as far as the server sends it: up to the first "
    "zero\n"
    "byte, whatever the type of the value; the type itself is not sent. The number of bytes "
    "counts\n"
    "all of the data, the terminator of a text included. A value that does not fit a reply (above\n"
    "8160 bytes with its name) is listed with its length alone. Reading works everywhere below\n"
    "HKEY_LOCAL_MACHINE.\n"
    "\n"
    "Example:\n"
    "  qorlixctl reg values SOFTWARE\\Vesmark\\NORVA\\LogNames\\PLC1\n";

constexpr char kRegGet[] =
    "Shows one value: its data up to the first zero byte, and the length that the server reports,\n"
    "which is that of all data less one (for a text, less its terminator). Values of other types\n"
    "than text are read as well, but a number, for example, shows only what stands before its "
    "first\n"
    "zero byte. \"\" as NAME is the default value of the key. Reading works everywhere below\n"
    "HKEY_LOCAL_MACHINE. With --json the bytes are there in hex, too.\n"
    "\n"
    "Examples:\n"
    "  qorlixctl reg get SOFTWARE\\Vesmark\\NORVA SetupSucceeded\n"
    "  qorlixctl reg get SOFTWARE\\Vesmark\\NORVA \"\" --json\n";

constexpr char kRegSet[] =
    "Writes a value as text (REG_SZ), whatever it was before; the key has to exist. Changes are\n"
    "permitted below SOFTWARE\\Vesmark\\NORVA only (and below its twin "
    "SOFTWARE\\Wow6432Node\\Vesmark\\\n"
    "NORVA); elsewhere the server answers 5 and writes to the event log. Texts are limited to the\n"
    "ANSI code page and to 8159 bytes. \"\" as NAME is the default value.\n"
    "\n"
    "  --base [ROOT]  use the command that tells the root key: HKLM (the default), HKCU, HKCR, "
    "HKU,\n"
    "                 HKCC or 0x and its number. The server accepts HKLM only and answers 5 "
    "otherwise.\n"
    "\n"
    "Examples:\n"
    "  qorlixctl reg set SOFTWARE\\Vesmark\\NORVA\\Demo Greeting \"Hello there\"\n"
    "  qorlixctl reg set SOFTWARE\\Vesmark\\NORVA\\Demo Empty \"\" --base\n"
    "  qorlixctl reg set SOFTWARE\\Vesmark\\NORVA\\Demo Dashes -- --text\n";

constexpr char kRegUnset[] =
    "Removes a value from a key. Permitted below SOFTWARE\\Vesmark\\NORVA only, as all changes "
    "are;\n"
    "answers 2 when there is no such key or value.\n"
    "\n"
    "Example:\n"
    "  qorlixctl reg unset SOFTWARE\\Vesmark\\NORVA\\Demo Greeting\n";

constexpr char kRegCreate[] =
    "Creates a key and the keys above it that are missing. It succeeds as well when the key "
    "exists;\n"
    "the answer does not tell one from the other. Permitted below SOFTWARE\\Vesmark\\NORVA only.\n"
    "\n"
    "  --base [ROOT]  use the command that tells the root key: HKLM (the default), HKCU, HKCR, "
    "HKU,\n"
    "                 HKCC or 0x and its number. The server accepts HKLM only and answers 5 "
    "otherwise.\n"
    "\n"
    "Examples:\n"
    "  qorlixctl reg create SOFTWARE\\Vesmark\\NORVA\\Demo\n"
    "  qorlixctl reg create SOFTWARE\\Vesmark\\NORVA\\Demo --base HKCU\n";

constexpr char kRegDelete[] =
    "Careful, this does not do what its name says: the server opens the key PATH and removes the\n"
    "tree of the same path below it, that is PATH\\PATH with everything in it. The key PATH "
    "itself\n"
    "always stays. An ordinary key has no such tree, so deleting it changes nothing and answers "
    "2.\n"
    "This is how the server's command works, and clients rely on it. To take values out of a key\n"
    "use 'reg unset'. Permitted below SOFTWARE\\Vesmark\\NORVA only.\n"
    "\n"
    "  --base [ROOT]  use the command that tells the root key: HKLM (the default), HKCU, HKCR, "
    "HKU,\n"
    "                 HKCC or 0x and its number. The server accepts HKLM only and answers 5 "
    "otherwise.\n"
    "\n"
    "Example, on a key K = SOFTWARE\\Vesmark\\NORVA\\Demo:\n"
    "  qorlixctl reg create SOFTWARE\\Vesmark\\NORVA\\Demo\\SOFTWARE\\Vesmark\\NORVA\\Demo\n"
    "  qorlixctl reg delete SOFTWARE\\Vesmark\\NORVA\\Demo\n"
    "The first makes the tree K\\K, the second removes it again; K stays.\n";

constexpr char kRaw[] =
    "Sends bytes as they are and takes the reply apart: mark, result, and the fields of commands\n"
    "that are known ('qorlixctl commands' lists them). HEX are pairs of hex digits; blanks "
    "between\n"
    "them and several arguments make them readable and change nothing. Numbers are written lowest\n"
    "byte first; a text is its length in four bytes and its characters; the length FFFF0000 means\n"
    "that there is no text.\n"
    "\n"
    "Some requests are answered twice: the reply, the same once more, and a further one. The "
    "parts\n"
    "are shown one by one; the exit code is that of the first. What is longer than 8192 bytes is\n"
    "taken by the server as several requests, each of which is answered. Nothing is checked "
    "before\n"
    "it is sent, so a stop request stops the server.\n"
    "\n"
    "Examples:\n"
    "  qorlixctl raw 1000                     NoOperation (16)\n"
    "  qorlixctl raw FD00 00000000            StopServer without its confirmation: answers 1255\n"
    "  qorlixctl raw 10                       half a command code: a doubled reply\n"
    "  qorlixctl raw \"1500 08000000 534F465457415245 00000000\"\n"
    "                                         Reg_EnumKey of \"SOFTWARE\", index 0\n";

constexpr char kTraceReport[] =
    "Makes one HTML page of trace files: a summary, a time line of connections and functions, how\n"
    "long requests took, and the lines themselves with a filter. The page needs a browser and\n"
    "nothing else; it fetches nothing, so it can be sent on as it is. It holds everything that "
    "the\n"
    "trace holds: look at that before you do. Without a FILE the place comes from the\n"
    "configuration: the pair of files, or the ring. The two files of a pair are put in order.\n"
    "\n"
    "  -o OUT         the page to write; replaces an earlier report, but no other file\n"
    "  --title TEXT   the heading, if it is not to be the name of the first file\n"
    "  --ring         read the ring in shared memory, whatever the configuration says\n"
    "  --force        replace OUT whatever it is, unless it is one of the traces\n"
    "\n"
    "Examples:\n"
    "  qorlixctl trace report -o report.html\n"
    "  qorlixctl trace report C:\\TMP\\ZqFILE1.TRC C:\\TMP\\ZqFILE2.TRC -o report.html\n";

constexpr char kCodes[] =
    "Lists the result codes that have a name: those of the server, 8601 to 8620, and the usual "
    "ones\n"
    "of Windows. Libraries that a command calls may answer with others.\n";

constexpr char kCommands[] =
    "Lists the 39 commands with their codes, the fields of their requests in order, and those of\n"
    "their replies behind mark and result. A failure has no fields unless it says so; a result of\n"
    "8602 has none either when the request could not be read, and 8604 (exception) and 8620 "
    "(unknown\n"
    "command) never have any. An older server may answer 8620 for commands that it lacks.\n";

constexpr char kHelp[] = "The same as --help.\n";

constexpr Subcommand kSubcommands[] = {
    {"start", "", 0, 0, kTakesServer, "Start the server and wait until it is ready", kStart,
     StartAction},
    {"ping", "", 0, 0, 0, "Ask whether the server answers", kPing, PingAction},
    {"stop", "", 0, 0, 0, "Stop the server", kStop, StopAction},
    {"reg ls", "PATH", 1, 1, 0, "List the subkeys of a key", kRegLs, RegLsAction},
    {"reg values", "PATH", 1, 1, 0, "List the values of a key", kRegValues, RegValuesAction},
    {"reg get", "PATH NAME", 2, 2, 0, "Show a value", kRegGet, RegGetAction},
    {"reg set", "PATH NAME TEXT", 3, 3, kTakesBase, "Write a value as text", kRegSet, RegSetAction},
    {"reg unset", "PATH NAME", 2, 2, 0, "Remove a value", kRegUnset, RegUnsetAction},
    {"reg create", "PATH", 1, 1, kTakesBase, "Create a key", kRegCreate, RegCreateAction},
    {"reg delete", "PATH", 1, 1, kTakesBase, "Remove the tree PATH\\PATH, not the key itself",
     kRegDelete, RegDeleteAction},
    {"board list", "DEVICEID", 1, 1, 0, "List the boards of a device id", kBoardList,
     BoardListAction},
    {"board installed", "", 0, 0, 0, "List the installed boards", kBoardInstalled,
     BoardInstalledAction},
    {"board available", "", 0, 0, 0, "List the boards that can be installed", kBoardAvailable,
     BoardAvailableAction},
    {"board adapters", "", 0, 0, 0, "List the adapters", kBoardAdapters, BoardAdaptersAction},
    {"board configs", "[BOARD [MAP [DEVICEID [INSTANCEID]]]]", 0, 4, 0, "List configurations",
     kBoardConfigs, BoardConfigsAction},
    {"board map", "DEVICEID [ADAPTER [HARDWAREID]]", 1, 3, 0, "Show the map of a board", kBoardMap,
     BoardMapAction},
    {"board info", "TYPE [BOARD [MAP [DEVICEID [INSTANCEID]]]]", 1, 5, 0,
     "Show one text on a board", kBoardInfo, BoardInfoAction},
    {"board info-ex", "TYPE [BOARD [MAP [INSTANCEID]]]", 1, 4, 0, "Show data on a board, in hex",
     kBoardInfoEx, BoardInfoExAction},
    {"board scan", "", 0, 0, 0, "Have the hardware scanned", kBoardScan, BoardScanAction},
    {"board create-logdevices", "", 0, 0, 0, "Create the logical devices of all boards",
     kBoardCreateLogdevices, BoardCreateLogdevicesAction},
    {"board update-logdevices", "DEVICEID HARDWAREID", 2, 2, 0, "Update those of one board",
     kBoardUpdateLogdevices, BoardUpdateLogdevicesAction},
    {"board uninitialized", "", 0, 0, 0, "Ask whether boards wait to be initialised",
     kBoardUninitialized, BoardUninitializedAction},
    {"device state", "HARDWAREID [OPTION]", 1, 2, 0, "Show status and problem of a device",
     kDeviceState, DeviceStateAction},
    {"device watch", "DEVICEID GUID", 2, 2, 0, "Have changes of a device class noted", kDeviceWatch,
     DeviceWatchAction},
    {"device unwatch", "DEVICEID GUID", 2, 2, 0, "End that", kDeviceUnwatch, DeviceUnwatchAction},
    {"device changes", "DEVICEID", 1, 1, kTakesFor, "Fetch the changes that were noted",
     kDeviceChanges, DeviceChangesAction},
    {"device info", "DATA1 V1 V2 V3 DATA2 SIZE1 SIZE2 LAST", 8, 8, 0, "Ask for board information",
     kDeviceInfo, DeviceInfoAction},
    {"check", "", 0, 0, 0, "Bring logical names and devices into order", kCheck, CheckAction},
    {"install", "DEVICEID", 1, 1, kTakesLanguage, "Run a device's installer, and the check",
     kInstall, InstallAction},
    {"deinstall", "DEVICEID", 1, 1, kTakesLanguage | kTakesBoard, "Run a device's deinstaller",
     kDeinstall, DeinstallAction},
    {"driver install", "SERVICE INF [THIRD]", 2, 3, kTakesMode, "Have a driver installed",
     kDriverInstall, DriverInstallAction},
    {"panel", "", 0, 0, 0, "Open the online panel", kPanel, PanelAction},
    {"restart", "[NAME]", 0, 1, kTakesEvent, "Restart a logical device, or fetch the result",
     kRestart, RestartAction},
    {"ip add", "ADDRESS MASK IFINDEX", 3, 3, 0, "Add an address to a network interface", kIpAdd,
     IpAddAction},
    {"ip delete", "CONTEXT", 1, 1, 0, "Delete an address that was added", kIpDelete,
     IpDeleteAction},
    {"test", "TEXT", 1, 1, 0, "Have the server show a text on its desktop", kTest, TestAction},
    {"raw", "HEX...", 1, kNoLimit, 0, "Send any request and explain the reply", kRaw, RawAction},
    {"decode", "HEX...", 1, kNoLimit, kTakesDecode,
     "Explain a request or a reply, without a server", kDecode, DecodeAction},
    {"doctor", "", 0, 0, 0, "Look for what is wrong with this computer's set-up", kDoctor,
     DoctorAction},
    {"trace show", "", 0, 0, 0, "Show the trace configuration and what it does", kTraceShow,
     TraceShowAction},
    {"trace set", "NAME VALUE", 2, 2, 0, "Write a value of the trace configuration", kTraceSet,
     TraceSetAction},
    {"trace refresh", "", 0, 0, 0, "Make all that trace read it again", kTraceRefresh,
     TraceRefreshAction},
    {"trace follow", "[FILE]", 0, 1, kTakesLines | kTakesColor | kTakesFor,
     "Show trace lines as they come", kTraceFollow, TraceFollowAction},
    {"trace dump", "[FILE...]", 0, kNoLimit, kTakesLines | kTakesColor, "Show a whole trace",
     kTraceDump, TraceDumpAction},
    {"trace stats", "[FILE...]", 0, kNoLimit, kTakesLines, "Count a trace by function", kTraceStats,
     TraceStatsAction},
    {"trace report", "[FILE...]", 0, kNoLimit, kTakesReport, "Make an HTML page of trace files",
     kTraceReport, TraceReportAction},
    {"codes", "", 0, 0, 0, "List the result codes", kCodes, CodesAction},
    {"commands", "", 0, 0, 0, "List the server's commands", kCommands, CommandsAction},
    {"help", "[COMMAND]", 0, 2, 0, "Explain the program or a command", kHelp, HelpAction},
};

}  // namespace

std::span<const Subcommand> Subcommands() { return kSubcommands; }

bool IsGroup(std::string_view word) {
  for (const Subcommand& subcommand : kSubcommands) {
    const std::string_view name = subcommand.name;
    const std::size_t blank = name.find(' ');
    if (blank != std::string_view::npos && name.substr(0, blank) == word) return true;
  }
  return false;
}

const Subcommand* FindSubcommand(std::span<const std::string> words, std::size_t& count) {
  for (const Subcommand& subcommand : kSubcommands) {
    const std::string_view name = subcommand.name;
    const std::size_t blank = name.find(' ');
    count = blank == std::string_view::npos ? 1 : 2;
    if (words.size() < count || words[0] != name.substr(0, blank)) continue;
    if (count == 1 || words[1] == name.substr(blank + 1)) return &subcommand;
  }
  return nullptr;
}

}  // namespace cli
