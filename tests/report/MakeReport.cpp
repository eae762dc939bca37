// Writes a trace as the server would write it, and has qorlixctl's own code make a report of it.
// usage: make_report FOLDER LINES long|time|text|short
// Leaves FOLDER/ZqFILE1.TRC and FOLDER/report.html, and prints what was put into them as JSON.

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

#include "cli/Ctl.h"
#include "server/CommandCode.h"
#include "trace/TraceRecord.h"

namespace {

constexpr char kHostileText[] =
    "</script><script>document.title='broken'</script><img src=x onerror=alert(1)>\"'\\<!--";

// The same numbers on every machine.
class Numbers {
 public:
  std::uint32_t Below(std::uint32_t bound) {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    return static_cast<std::uint32_t>(state_ >> 33) % bound;
  }

 private:
  std::uint64_t state_ = 42;
};

struct Made {
  std::uint32_t lines = 0;
  std::uint32_t requests = 0;
  std::uint32_t getValues = 0;
  std::uint32_t errorLines = 0;
  std::uint32_t refused = 0;
};

class TraceFile {
 public:
  TraceFile(const std::string& path, zqotrc::TraceFormat format)
      : file_(path, std::ios::binary), format_(format) {}

  void Line(const char* function, std::uint32_t place, const std::string& text) {
    microseconds_ += 20 + numbers.Below(60);
    const std::int64_t milliseconds = microseconds_ / 1000;
    const zqotrc::TraceMoment moment = {/*hasLocalTime=*/true,
                                        static_cast<std::int32_t>(milliseconds / 3600000 % 24),
                                        static_cast<std::int32_t>(milliseconds / 60000 % 60),
                                        static_cast<std::int32_t>(milliseconds / 1000 % 60),
                                        static_cast<std::int32_t>(milliseconds % 1000),
                                        microseconds_,
                                        /*frequency=*/1000000,
                                        /*processId=*/4321,
                                        /*threadId=*/1234};
    zqotrc::TraceRecord record;
    const zqotrc::TraceCall call = {function,    /*level=*/0xFFFFFFFF, "SRV", /*code=*/0,
                                    /*extra=*/0, "ServerLoop.cpp",     place, text.c_str()};
    zqotrc::BuildRecord(record, format_, "QORLIXSRV64", call, moment);
    char line[zqotrc::kLineBufferSize];
    file_ << zqotrc::FormatLine(line, format_, record, moment) << '\n';
    ++made.lines;
  }
  void Loop(std::uint32_t place, const std::string& text) { Line("RunSrvLoop: ", place, text); }
  void Error(const char* function, std::uint32_t place, const std::string& text) {
    Line(function, place, text);
    ++made.errorLines;
  }
  void Pause(std::int64_t microseconds) { microseconds_ += microseconds; }

  Made made;
  Numbers numbers;

 private:
  std::ofstream file_;
  zqotrc::TraceFormat format_;
  std::int64_t microseconds_ = (9LL * 60 + 41) * 60 * 1000000;  // 09:41
};

std::string Hex(std::uint32_t number) {
  char text[12];
  (void)std::snprintf(text, sizeof(text), "0x%x", number);
  return text;
}

struct Kind {
  const char* function;
  std::uint32_t extraMicroseconds;  // up to so many
  CommandCode code;
};
constexpr Kind kKinds[] = {
    {"Reg_GetValue: ", 400, CommandCode::Reg_GetValue},
    {"Reg_GetValue: ", 400, CommandCode::Reg_GetValue},
    {"Reg_SetValue: ", 2500, CommandCode::Reg_SetValue},
    {"Reg_EnumKey: ", 900, CommandCode::Reg_EnumKey},
    {"Reg_CreateKey:", 1500, CommandCode::Reg_CreateKey},
    {nullptr, 10, CommandCode::NoOperation},
    {"BC_EnumBoard: ", 60000, CommandCode::BC_EnumBoard},
};

void Wake(TraceFile& trace, std::uint32_t connection) {
  trace.Loop(62, "while - WaitForMultipleObjects");
  trace.Pause(trace.numbers.Below(9000));
  trace.Loop(64, "WaitForMultipleObjects received Element on dwWait=" + Hex(connection));
}

void Reply(TraceFile& trace, std::uint32_t result) {
  trace.Line("Send: ", 124, ">> Begin CQorlixSRVPipe::Send(long)");
  trace.Line(
      "Send: ", 129,
      "<< CQorlixSRVPipe::Send SendResult=" + Hex(result) + " writeResult=0x1  DataLength=6");
}

void Request(TraceFile& trace, std::uint32_t connection) {
  const Kind& kind = kKinds[trace.numbers.Below(static_cast<std::uint32_t>(std::size(kKinds)))];
  const std::uint32_t chance = trace.numbers.Below(200);
  Wake(trace, connection);
  trace.Loop(120, "Pending: READING_STATE");
  trace.Loop(194, "WRITING_STATE -> GetCommand for Pipe(" + std::to_string(connection) + ")");
  trace.Loop(10, "opCode " + Hex(static_cast<std::uint32_t>(kind.code)));
  if (kind.function != nullptr) trace.Line(kind.function, 131, ">> Start");
  trace.Pause(trace.numbers.Below(kind.extraMicroseconds));
  std::uint32_t result = chance < 14 ? 2 : 0;
  if (chance == 199 && kind.function != nullptr) {
    trace.Error(kind.function, 160, "Exception: RegDeleteValue");
    result = 8604;
    ++trace.made.errorLines;  // the line of the reply
  }
  Reply(trace, result);
  if (kind.function != nullptr) {
    trace.Line(kind.function, 174,
               "<< " + std::string(kind.function, std::string_view(kind.function).find(':')) +
                   " result = 0x0");
  }
  ++trace.made.requests;
  if (result == 2) ++trace.made.refused;
  if (kind.code == CommandCode::Reg_GetValue) ++trace.made.getValues;

  Wake(trace, connection);
  trace.Loop(79, "No Pending Operation -> check Pipe-State");
  trace.Loop(171, "READING_STATE -> ReadFile: Pipe(" + std::to_string(connection) + ")=0x1c4");
  trace.Loop(184, "ReadFile: ReceivePointer=0 Byte");
}

void WriteTrace(TraceFile& trace, std::uint32_t lines) {
  if (lines == 0) return;
  constexpr std::uint32_t kConnections = 11;
  trace.Line("CreateSRV: ", 28, ">> Start Pipe Server");
  trace.Line("StartSRV: ", 52, ">> StartSRV");
  for (std::uint32_t i = 0; i < 64 && lines > 200; ++i) {
    trace.Line("StartSRV: ", 88,
               "Call ConnectToNewClient for Connection(" + std::to_string(i) + ") Pipe=0x1c4");
  }
  trace.Line("Reg_CreateKey:", 113, kHostileText);
  while (trace.made.lines + 20 < lines) {
    if (trace.numbers.Below(40) == 0) trace.Pause(trace.numbers.Below(3000000));
    Request(trace, trace.numbers.Below(kConnections) * (1 + trace.numbers.Below(2)));
  }
  while (trace.made.lines < lines) trace.Loop(62, "while - WaitForMultipleObjects");
}

zqotrc::TraceFormat FormatOf(std::string_view name) {
  return name == "time"    ? zqotrc::TraceFormat::kTime
         : name == "text"  ? zqotrc::TraceFormat::kText
         : name == "short" ? zqotrc::TraceFormat::kShort
                           : zqotrc::TraceFormat::kLong;
}

}  // namespace

int main(int count, char** words) {
  if (count != 4) return 2;
  const std::string folder = words[1];
  Made made;
  {
    TraceFile trace(folder + "/ZqFILE1.TRC", FormatOf(words[3]));
    WriteTrace(trace, static_cast<std::uint32_t>(std::strtoul(words[2], nullptr, 10)));
    made = trace.made;
  }

  cli::Output output;
  const std::array<std::string, 5> line = {"trace", "report", folder + "/ZqFILE1.TRC", "-o",
                                           folder + "/report.html"};
  const int exitCode = cli::RunCtl(line, output);
  (void)std::fputs(output.err.c_str(), stderr);
  (void)std::printf(
      "{\"lines\": %u, \"requests\": %u, \"getValues\": %u, \"errorLines\": %u, "
      "\"refused\": %u}\n",
      made.lines, made.requests, made.getValues, made.errorLines, made.refused);
  return exitCode;
}
