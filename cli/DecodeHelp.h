#ifndef CLI_DECODEHELP_H_
#define CLI_DECODEHELP_H_

/// The help text of the command that explains bytes.
namespace cli {

inline constexpr char kDecode[] =
    "Takes the bytes of a request apart, or with --reply those of a reply, without a server. HEX\n"
    "is written as for 'raw'.\n"
    "\n"
    "  --command NAME  the command, by name or code. Of a reply it tells the fields behind mark "
    "and\n"
    "                  result; a request tells its command itself, so there it is only compared\n"
    "  --reply         the bytes are what the server answered\n"
    "\n"
    "The exit code is 0 for one whole message, whatever the result in it, and 1 for anything else: "
    "a\n"
    "request that the server could not read, a reply that is cut short or has bytes behind it.\n"
    "\n"
    "Examples:\n"
    "  qorlixctl decode 1500 08000000 534F465457415245 00000000\n"
    "  qorlixctl decode --reply --command Reg_GetValue 0400 00000000 01000000 41 01000000\n";

}  // namespace cli

#endif  // CLI_DECODEHELP_H_
