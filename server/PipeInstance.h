#ifndef SERVER_PIPEINSTANCE_H_
#define SERVER_PIPEINSTANCE_H_

#include <cstdint>

#include "platform/WinTypes.h"

/// Instances of the pipe: as many as one wait of the platform covers.
inline constexpr int kPipeInstances = 64;

/// Bytes of a request and of a reply, at most.
inline constexpr std::uint32_t kPipeBufferSize = 8192;

inline constexpr char kPipeName[] = "\\\\.\\pipe\\QorlixSRVPIPE32";

enum PipeState : std::uint32_t {
  CONNECTING_STATE = 0,
  READING_STATE = 1,
  WRITING_STATE = 2,
};

/// One instance of the pipe and the request it is serving. Touched by the loop thread only.
///
/// Owns its pipe handle and event; CloseSRV closes the handle in the order flush, disconnect,
/// close.
struct PipeInstance {
  OVERLAPPED overlapped;     ///< its hEvent is the instance's event
  HANDLE hPipe;              ///< 0 when closed
  HANDLE hEvent;             ///< never set; traces print it as 0
  std::uint32_t dwState;     ///< a PipeState
  std::uint32_t fPendingIO;  ///< 1 while a connect, read or write is outstanding
  char PipeName[260];
  std::uint8_t ReplyBuffer[kPipeBufferSize];
  std::uint8_t RequestBuffer[kPipeBufferSize];
  std::uint32_t cbToWrite;       ///< bytes of reply built so far
  std::uint32_t ReceivePointer;  ///< bytes of request received
  std::uint32_t CurrentPointer;  ///< bytes of request consumed; never above ReceivePointer

  /// Bytes handed to the write that is outstanding; cbToWrite is set back before it completes.
  std::uint32_t cbWriting;
  /// Bytes of a second reply to the same request, built while the first was still being written;
  /// 0 when there is none. It is written when the first is through.
  std::uint32_t cbWriteNext;
  /// 1 when no connect could be started on the handle; the loop tries again after a while.
  std::uint32_t fConnectFailed;
  /// The process that opened the pipe, 0 when the system does not tell; kClientNotAsked until
  /// the first request.
  std::uint32_t clientProcess;
};

/// Process numbers are multiples of four.
inline constexpr std::uint32_t kClientNotAsked = 0xFFFFFFFF;

/// The pool, indexed by connection number (`conId`, 0 to 63).
extern PipeInstance Pipe[kPipeInstances];

inline PipeInstance& PipeOf(int conId) { return Pipe[conId]; }

#endif  // SERVER_PIPEINSTANCE_H_
