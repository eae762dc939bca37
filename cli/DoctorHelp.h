#ifndef CLI_DOCTORHELP_H_
#define CLI_DOCTORHELP_H_

/// The help text of the command that looks for what is wrong.
namespace cli {

inline constexpr char kDoctor[] =
    "Looks at everything that the server needs and tells what it finds, with a remedy: the pipe "
    "and\n"
    "whose it is, the libraries and who may replace them, the stack's keys, the plug-ins that "
    "they\n"
    "name, the trace and the event log. It changes nothing; the server is asked NoOperation only.\n"
    "In an elevated command prompt it sees more. Beside a server that runs, its folder is looked "
    "at;\n"
    "else that of qorlixctl.\n"
    "\n"
    "  ok       as it should be\n"
    "  note     worth knowing; nothing fails by it\n"
    "  warning  something that clients may ask for will fail\n"
    "  error    the server does not serve, or serves whom it should not; or a library or device "
    "that\n"
    "           is set up cannot work\n"
    "\n"
    "The exit code is 1 when there is an error, otherwise 0.\n"
    "\n"
    "Examples:\n"
    "  qorlixctl doctor\n"
    "  qorlixctl doctor --json\n";

}  // namespace cli

#endif  // CLI_DOCTORHELP_H_
