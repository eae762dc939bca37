#ifndef CLI_TRACEHELP_H_
#define CLI_TRACEHELP_H_

/// The help texts of the trace commands.
namespace cli {

inline constexpr char kTraceGroup[] =
    "The trace commands set the trace facility up and read what it wrote. It is configured by the\n"
    "key SOFTWARE\\Vesmark\\NORVA\\TrcParams below HKEY_LOCAL_MACHINE. To switch it on,\n"
    "with a folder that exists, because nobody creates it:\n"
    "  mkdir C:\\Tracing\n"
    "  qorlixctl trace set Path C:\\Tracing\n"
    "  qorlixctl trace set Level all\n"
    "  qorlixctl trace set zqserver_level all\n"
    "  qorlixctl trace refresh\n"
    "  qorlixctl trace follow\n";

inline constexpr char kTraceShow[] =
    "Shows every value of the trace configuration as a process would read it now, which lines of "
    "the\n"
    "server pass and why, where they go, and what is likely to be otherwise than expected. It "
    "reads\n"
    "the registry itself and needs no server. A server that runs holds what it read last, until\n"
    "'qorlixctl trace refresh'.\n"
    "\n"
    "Example:\n"
    "  qorlixctl trace show\n";

inline constexpr char kTraceSet[] =
    "Writes a value of the trace configuration through the server, and creates the key if it is\n"
    "missing. A value that the facility would ignore or take for another is refused. NAME is one "
    "of\n"
    "Level, zqserver_level, Consult, Format, Output, Path, FileName, Byte/File, sm_size, FctName,\n"
    "Module, String and TraceId; 'qorlixctl trace show' says what they mean. Level and\n"
    "zqserver_level take numbers or names: entry, error, progress, result, all. Level alone "
    "writes\n"
    "nothing. It takes effect by 'qorlixctl trace refresh'. To take a value back:\n"
    "  qorlixctl reg unset SOFTWARE\\Vesmark\\NORVA\\TrcParams NAME\n"
    "\n"
    "Examples:\n"
    "  qorlixctl trace set zqserver_level error,result\n"
    "  qorlixctl trace set Output SM\n"
    "  qorlixctl trace set FctName \"Reg_* BC_*\"\n";

inline constexpr char kTraceRefresh[] =
    "Makes every process that traces read its configuration again, at its next line. Without it a\n"
    "change shows when Consult seconds have passed, or in processes that start anew.\n"
    "\n"
    "Example:\n"
    "  qorlixctl trace refresh\n";

#define CLI_LINE_OPTIONS                                                                          \
  "  --ring              read the ring in shared memory, whatever the configuration says\n"       \
  "  --level NAMES       only lines of these levels: entry, error, progress, result, a code "     \
  "such\n"                                                                                        \
  "                      as FR, or bits such as 0x50, with commas between them. The server's "    \
  "own\n"                                                                                         \
  "                      lines are of all levels and always pass.\n"                              \
  "  --function PATTERN  only these functions: * stands for any text, ? for one character\n"      \
  "  --text PATTERN      only texts that begin so; '*PATTERN' for texts that hold it\n"           \
  "  --since WHEN        only lines since 14:05, 14:05:09 or 14:05:09,123, or of the last 90s,\n" \
  "                      10m, 2h, 1d; for lines with a time of day (Format LONG)\n"

inline constexpr char kTraceDump[] =
    "Shows the lines of a trace, the oldest first, in columns: time, process, thread, level,\n"
    "component, code, file and line, function, text, as far as their layout has them. Without a "
    "FILE\n"
    "the place comes from the configuration: the pair of files, or the ring. Two files of a pair "
    "are\n"
    "put in order. Control characters are shown as \\xNN.\n"
    "\n" CLI_LINE_OPTIONS
    "  --color WHEN        auto (on a terminal), always or never\n"
    "\n"
    "Examples:\n"
    "  qorlixctl trace dump --since 10m\n"
    "  qorlixctl trace dump C:\\Tmp\\ZqFile1.TRC C:\\Tmp\\ZqFile2.TRC --function \"Reg_*\"\n"
    "  qorlixctl trace dump --ring --text \"Exception*\" --json\n";

inline constexpr char kTraceFollow[] =
    "Shows lines as they are written, until Ctrl-C, across the change from one file of the pair "
    "to\n"
    "the other. Without a FILE the place comes from the configuration. With --since it begins "
    "with\n"
    "lines that are there already. With --json every line is an object of its own.\n"
    "\n" CLI_LINE_OPTIONS
    "  --color WHEN        auto (on a terminal), always or never\n"
    "  --for SECONDS       end by itself after that time\n"
    "\n"
    "Examples:\n"
    "  qorlixctl trace follow\n"
    "  qorlixctl trace follow --ring --function \"Reg_*\" --for 60\n";

inline constexpr char kTraceStats[] =
    "Counts the lines of a trace by function: lines, calls (the first >> of each), errors "
    "(lines\n"
    "that tell of an exception or a failure), results (lines with another result than 0 that is\n"
    "none of them), and the time from the first "
    "to\n"
    "the last line of a call, in milliseconds: shortest, mean, longest, and p99, which 99 of 100\n"
    "calls stayed within. A trace has times with Format LONG (to the millisecond) and TIME.\n"
    "\n" CLI_LINE_OPTIONS
    "\n"
    "Example:\n"
    "  qorlixctl trace stats --since 1h\n";

#undef CLI_LINE_OPTIONS

}  // namespace cli

#endif  // CLI_TRACEHELP_H_
