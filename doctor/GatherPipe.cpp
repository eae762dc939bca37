#include <windows.h>

#include <iterator>

#include "client/Deadline.h"
#include "client/QorlixClient.h"
#include "doctor/Gather.h"
#include "platform/WinHandles.h"

namespace doctor {
namespace {

// Rights and flags are those of the client: what it may not do is not asked for here.
std::uint32_t Connect(const char* name, std::uint32_t timeoutMs, UniqueKernelHandle& pipe) {
  const client::Deadline deadline(timeoutMs);
  for (;;) {
    const HANDLE opened =
        CreateFileA(name, GENERIC_READ | FILE_WRITE_DATA, /*dwShareMode=*/0,
                    /*lpSecurityAttributes=*/nullptr, OPEN_EXISTING,
                    SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, /*hTemplateFile=*/nullptr);
    if (opened != INVALID_HANDLE_VALUE) {
      pipe.reset(opened);
      return 0;
    }
    const DWORD error = GetLastError();
    const std::uint32_t left = deadline.LeftMs();
    if (error != ERROR_PIPE_BUSY || left == 0) return error;
    (void)WaitNamedPipeA(name, left);
  }
}

PipeFacts::Elevation ElevationOf(HANDLE process) {
  UniqueKernelHandle token;
  if (OpenProcessToken(process, TOKEN_QUERY, token.put()) == FALSE) {
    return PipeFacts::Elevation::Unknown;
  }
  TOKEN_ELEVATION elevation = {};
  DWORD size = 0;
  if (GetTokenInformation(token.get(), TokenElevation, &elevation, sizeof(elevation), &size) ==
      FALSE) {
    return PipeFacts::Elevation::Unknown;
  }
  return elevation.TokenIsElevated != 0 ? PipeFacts::Elevation::Yes : PipeFacts::Elevation::No;
}

void LookAtProcess(PipeFacts& facts) {
  const UniqueKernelHandle process(
      OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, /*bInheritHandle=*/FALSE, facts.process));
  if (!process) return;
  char program[MAX_PATH] = "";
  DWORD size = std::size(program);
  if (QueryFullProcessImageNameA(process.get(), /*dwFlags=*/0, program, &size) != FALSE) {
    facts.program.assign(program, size);
  }
  facts.elevation = ElevationOf(process.get());
}

void LookAtPipe(HANDLE pipe, PipeFacts& facts) {
  DWORD instances = 0;
  if (GetNamedPipeHandleStateA(pipe, /*lpState=*/nullptr, &instances,
                               /*lpMaxCollectionCount=*/nullptr,
                               /*lpCollectDataTimeout=*/nullptr, /*lpUserName=*/nullptr,
                               /*nMaxUserNameSize=*/0) != FALSE) {
    facts.instances = instances;
  }
  DWORD limit = 0;
  if (GetNamedPipeInfo(pipe, /*lpFlags=*/nullptr, /*lpOutBufferSize=*/nullptr,
                       /*lpInBufferSize=*/nullptr, &limit) != FALSE) {
    facts.limit = limit;
  }
  ULONG process = 0;
  if (GetNamedPipeServerProcessId(pipe, &process) != FALSE) facts.process = process;
}

}  // namespace

PipeFacts GatherPipe(const char* name, std::uint32_t timeoutMs) {
  PipeFacts facts;
  facts.name = name;
  {
    UniqueKernelHandle pipe;
    facts.error = Connect(name, timeoutMs, pipe);
    if (facts.error != 0) return facts;
    LookAtPipe(pipe.get(), facts);
  }
  if (facts.process != 0) LookAtProcess(facts);
  client::QorlixClient client(name);
  client.SetTimeouts(timeoutMs, timeoutMs);
  facts.answer = client.NoOperation().code();
  return facts;
}

}  // namespace doctor
