#ifndef CLI_BOARDHELP_H_
#define CLI_BOARDHELP_H_

/// What the help says of the subcommands on boards and devices.
namespace cli {

inline constexpr char kBoard[] =
    "The board commands ask the board library of the stack, through the server. Its texts and "
    "numbers\n"
    "are shown as they are: what a map, a type, a state or a value means is told in the library's "
    "own\n"
    "documents. A list goes on until the library says that there are no more (259). An entry that "
    "does\n"
    "not fit a reply is asked for once more with less room, and told of if that does not help; it "
    "does\n"
    "not end the list.\n";

inline constexpr char kDevice[] =
    "The device commands ask for the state of one device, or for what the board library noted of\n"
    "devices that came and went.\n";

inline constexpr char kBoardList[] =
    "Lists the boards that are there for a device id, with the map and the adapter of each.\n"
    "\n"
    "Example:\n"
    "  qorlixctl board list HWX7101\n";

inline constexpr char kBoardInstalled[] =
    "Lists every board that the library knows, with its identifiers, its map and its state. A "
    "board\n"
    "that was taken out may still be listed; the state tells, in the library's own numbers.\n"
    "\n"
    "Examples:\n"
    "  qorlixctl board installed\n"
    "  qorlixctl board installed --json\n";

inline constexpr char kBoardAvailable[] =
    "Lists the boards that can be installed, and a number of the library for each.\n"
    "\n"
    "Example:\n"
    "  qorlixctl board available\n";

inline constexpr char kBoardAdapters[] =
    "Lists the adapters with their maps, and a number from 0 to 255 of the library for each.\n"
    "\n"
    "Example:\n"
    "  qorlixctl board adapters\n";

inline constexpr char kBoardConfigs[] =
    "Lists configurations with protocol type, layer-4 protocol and unit: of all boards, or of "
    "those\n"
    "that the texts name. Texts that are left out are sent as empty ones.\n"
    "\n"
    "Examples:\n"
    "  qorlixctl board configs\n"
    "  qorlixctl board configs NB410A \"\" HWX7101\n";

inline constexpr char kBoardMap[] =
    "Shows the map of the board that device id, adapter and hardware id name. Texts that are left "
    "out\n"
    "are sent as empty ones. A hardware id has an &, so it needs quotation marks.\n"
    "\n"
    "Example:\n"
    "  qorlixctl board map HWX7101 \"\" \"PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C\"\n";

inline constexpr char kBoardInfo[] =
    "Shows one text that the library has on a board. TYPE says which one, as a number of the "
    "library,\n"
    "decimal or 0x and hex digits. Texts that are left out are sent as empty ones.\n"
    "\n"
    "Examples:\n"
    "  qorlixctl board info 1 NB410A\n"
    "  qorlixctl board info 0x10 NB410A \"\" HWX7101\n";

inline constexpr char kBoardInfoEx[] =
    "As 'board info', for data that are no text: they are shown in hex. The library gets no device "
    "id\n"
    "here.\n"
    "\n"
    "Example:\n"
    "  qorlixctl board info-ex 2 NB410A --json\n";

inline constexpr char kBoardScan[] =
    "Has the library look for boards that came or went. This may take longer than the 10 seconds "
    "that\n"
    "qorlixctl waits; the server serves nobody else meanwhile.\n"
    "\n"
    "Example:\n"
    "  qorlixctl board scan --timeout 60\n";

inline constexpr char kBoardCreateLogdevices[] =
    "Has the library create the logical devices that are missing. 'board scan' comes first if "
    "boards\n"
    "were put in.\n"
    "\n"
    "Example:\n"
    "  qorlixctl board create-logdevices --timeout 60\n";

inline constexpr char kBoardUpdateLogdevices[] =
    "Has the library write the logical devices of one kind of board anew. A hardware id has an &, "
    "so\n"
    "it needs quotation marks.\n"
    "\n"
    "Example:\n"
    "  qorlixctl board update-logdevices HWX7101 \"PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C\"\n";

inline constexpr char kBoardUninitialized[] =
    "Asks whether boards wait to be initialised. The answer is a number of the library: 0 says "
    "that\n"
    "there is none, with the exit code 0; any other says how many there are, or what went wrong, "
    "with\n"
    "the exit code 1. It is told as it is, not as a code of Windows; with --json as number.\n"
    "\n"
    "Example:\n"
    "  qorlixctl board uninitialized\n";

inline constexpr char kDeviceState[] =
    "Shows what the configuration manager of Windows has on a device: its status bits (DN_...) and "
    "its\n"
    "problem (CM_PROB_...), which is the number that the device manager shows as a code. The "
    "hardware\n"
    "id has an &, so it needs quotation marks. OPTION is handed to the board library, which looks "
    "the\n"
    "device up; without it, or with 0xFFFFFFFF, the library is asked without one.\n"
    "\n"
    "The answer is 0 also for a device that nobody knows. Its status and problem are both 0 then; "
    "a\n"
    "device that works has DN_STARTED.\n"
    "\n"
    "Examples:\n"
    "  qorlixctl device state \"PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C\"\n"
    "  qorlixctl device state \"PCI\\VEN_1F3C&DEV_5101&SUBSYS_51011F3C\" 0\n";

inline constexpr char kDeviceWatch[] =
    "Has the library note when devices of an interface class come or go. 'device changes' fetches "
    "what\n"
    "it noted, 'device unwatch' ends it. The library keeps the registration, not the connection: "
    "it\n"
    "holds until then, or until the server ends.\n"
    "\n"
    "Example:\n"
    "  qorlixctl device watch HWX7101 {4D36E972-E325-11CE-BFC1-08002BE10318}\n";

inline constexpr char kDeviceUnwatch[] =
    "Ends what 'device watch' began; device id and GUID are those given there.\n"
    "\n"
    "Example:\n"
    "  qorlixctl device unwatch HWX7101 {4D36E972-E325-11CE-BFC1-08002BE10318}\n";

inline constexpr char kDeviceChanges[] =
    "Fetches the changes that the library noted for a device id, until there are no more: of each "
    "its\n"
    "kind, a number of the library, the interface class, and its texts. Who fetches a change takes "
    "it\n"
    "away from everybody else. The device has to be watched first.\n"
    "\n"
    "  --for SECONDS  look again every 250 ms until the time is up, and show changes as they come\n"
    "                 (with --json at the end)\n"
    "\n"
    "Examples:\n"
    "  qorlixctl device changes HWX7101\n"
    "  qorlixctl device changes HWX7101 --for 60\n";

inline constexpr char kDeviceInfo[] =
    "Asks the library for board information, in its own terms: DATA1 and DATA2 are hex digits, two "
    "to a\n"
    "byte, or \"\" for none; the others are numbers, decimal or 0x and hex digits. SIZE1 and SIZE2 "
    "are the\n"
    "sizes of the two areas that the library fills, at most 8162 bytes together.\n"
    "\n"
    "Example:\n"
    "  qorlixctl device info \"\" 1 0 0 \"\" 16 32 0\n";

inline constexpr char kCheck[] =
    "Runs the plausibility check, as the server does when it starts: the boards are scanned, "
    "abandoned\n"
    "logical devices are dropped, every logical name whose logical device does not exist is "
    "unassigned,\n"
    "and routes and logical devices are set up anew. It changes the configuration. The logical "
    "names\n"
    "that lost their device are shown; for this the registry is read before and after.\n"
    "\n"
    "The result is the library's, of dropping the abandoned devices; a scan that failed does not "
    "show.\n"
    "The hardware identifiers are repaired at the start of the server only.\n"
    "\n"
    "Example:\n"
    "  qorlixctl check --timeout 60\n";

}  // namespace cli

#endif  // CLI_BOARDHELP_H_
