#ifndef CLI_ACTIONHELP_H_
#define CLI_ACTIONHELP_H_

/// What the help says of the subcommands that install, restart and set up.
namespace cli {

inline constexpr char kDriver[] =
    "The driver command hands a driver to the driver library of the stack, drvinstx.dll.\n";

inline constexpr char kIp[] =
    "The ip commands add addresses to a network interface and delete them again, through the IP\n"
    "configuration library of the stack, ipcfgx.dll. An address is deleted by the context that "
    "adding\n"
    "it told.\n";

inline constexpr char kInstall[] =
    "Runs the installer of a device: the function that the value Installer names below\n"
    "SOFTWARE\\Vesmark\\NORVA\\DefDevices\\DeviceID\\DEVICEID, as LIBRARY,FUNCTION, in a library "
    "of the\n"
    "server's system directory. The plausibility check runs after it, whatever it returned. The\n"
    "result is the installer's own, or says why it could not be run; the number alone does not "
    "tell\n"
    "which. The server answers nobody until it is done, and an installer that crashes takes the "
    "server\n"
    "with it.\n"
    "\n"
    "  --language EXT  the language extension that the installer gets; \"\" if it is left out\n"
    "\n"
    "Example:\n"
    "  qorlixctl install HWX7101 --language EN --timeout 120\n";

inline constexpr char kDeinstall[] =
    "Runs the deinstaller of a device, which the value Deinstaller names as Installer does for\n"
    "'install'. No plausibility check follows; 'qorlixctl check' makes one. The library stays "
    "loaded "
    "in\n"
    "the server, so its file cannot be replaced before the server has ended.\n"
    "\n"
    "  --language EXT  the language extension that the deinstaller gets; \"\" if it is left out\n"
    "  --board BOARD   the board that it gets; \"\" if it is left out\n"
    "\n"
    "Example:\n"
    "  qorlixctl deinstall HWX7101 --board NB410A\n";

inline constexpr char kDriverInstall[] =
    "Has drvinstx.dll install a driver: SERVICE, INF file, a THIRD text and the mode are handed on "
    "as\n"
    "they are; the library's documents say what they mean. The server answers twice when the "
    "library\n"
    "could be loaded. A single 0 therefore means that it could not, although 0 is success; then "
    "the\n"
    "exit code is 1. Two of them may also mean that the library lacks its function: the server "
    "does\n"
    "not tell. While the library cannot be loaded, a message box on the server's desktop has to "
    "be\n"
    "closed before it answers, and before it serves anybody.\n"
    "\n"
    "  --mode N  a number, decimal or 0x and hex digits; 0 if it is left out\n"
    "\n"
    "Example:\n"
    "  qorlixctl driver install qorlixnet C:\\Drivers\\qorlixnet.inf --mode 1 --timeout 300\n";

inline constexpr char kPanel[] =
    "Opens the online panel, onlpanelx.cpl, with the server's rights, on the server's desktop. "
    "The\n"
    "server answers when the panel is closed, and serves nobody before. A single 0 means that the "
    "panel\n"
    "could not be loaded, as for 'driver install', message box included. A panel that fails is "
    "usually\n"
    "answered with 0 as well.\n"
    "\n"
    "Example:\n"
    "  qorlixctl panel --timeout 3600\n";

inline constexpr char kRestart[] =
    "Has the server restart a logical device in the background. When the restart has ended the "
    "server\n"
    "sets a named event and keeps the result for whoever asks for it by the event's name, once. If "
    "no\n"
    "program has the event then, the result is dropped.\n"
    "\n"
    "  --wait SECONDS  create the event, wait for it that long, fetch the result and tell it. When "
    "the\n"
    "                  time runs out the restart goes on; its result is dropped unless another "
    "program\n"
    "                  has the event.\n"
    "  --event EVENT   the name of the event; with Global\\ in front of it for a server in "
    "another\n"
    "                  session. With --wait one is made up, and one that exists is set back. "
    "Without\n"
    "                  --wait another program has to create it.\n"
    "  --fetch EVENT   no restart: fetch the result that was kept under this name\n"
    "\n"
    "Results of a restart: 0 or a code of the restart library, rstagent9.dll; 10006 is one after "
    "which\n"
    "no ring check runs; 8603 the library could not be loaded; 8601 it lacks its function; 8604 "
    "it, "
    "or\n"
    "the ring check, raised an exception. 259: not finished, or unknown.\n"
    "\n"
    "Examples:\n"
    "  qorlixctl restart CP_L2_1: --wait 60\n"
    "  qorlixctl restart CP_L2_1: --event Global\\MyRestart\n"
    "  qorlixctl restart --fetch Global\\MyRestart\n";

inline constexpr char kIpAdd[] =
    "Adds an address to the network interface with the index IFINDEX ('netsh interface ipv4 show\n"
    "interfaces' lists them). ADDRESS and MASK are four numbers with dots. They go over the wire "
    "as\n"
    "four bytes in the order in which they are read, which is how the platform keeps addresses in\n"
    "memory. The answer tells a context, which is what deletes the address again, so keep it; the\n"
    "instance is told as well. The address is gone when the machine is restarted.\n"
    "\n"
    "Example:\n"
    "  qorlixctl ip add 192.168.0.10 255.255.255.0 11\n";

inline constexpr char kIpDelete[] =
    "Deletes an address that was added: CONTEXT is the nteContext that 'ip add' told.\n"
    "\n"
    "Example:\n"
    "  qorlixctl ip delete 33554434\n";

inline constexpr char kTest[] =
    "Has the server show TEXT, at most 259 bytes, in a box on its desktop: proof that the server "
    "is\n"
    "reached, and that it runs where somebody sees it. The answer, 999, comes when the box is "
    "closed,\n"
    "by whichever button; until then the server answers nobody. On a desktop that nobody sees, it "
    "is\n"
    "never closed: then only ending the process helps.\n"
    "\n"
    "Example:\n"
    "  qorlixctl test \"Can you see me?\" --timeout 60\n";

}  // namespace cli

#endif  // CLI_ACTIONHELP_H_
