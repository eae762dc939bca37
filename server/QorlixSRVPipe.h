#ifndef SERVER_QORLIXSRVPIPE_H_
#define SERVER_QORLIXSRVPIPE_H_

#include <cstdint>

#include "platform/WinTypes.h"
#include "server/PipeInstance.h"
#include "server/SrvResult.h"

/// The server: a pool of 64 overlapped pipe instances, served by the one thread that calls
/// StartSRV.
///
/// Every operation that takes a connection number works on that instance of the pool (0 to 63).
/// Command handlers are operations of this class and run on the loop thread, one request at a time.
/// A handler either sends one reply and returns the send's result, or sends nothing and returns a
/// nonzero result, which the loop then sends as Send(long).
class CQorlixSRVPipe {
 public:
  /// \param pipeSecurity goes to every pipe instance; it must outlive the object.
  explicit CQorlixSRVPipe(SECURITY_ATTRIBUTES* pipeSecurity);
  virtual ~CQorlixSRVPipe();
  CQorlixSRVPipe(const CQorlixSRVPipe&) = delete;
  CQorlixSRVPipe& operator=(const CQorlixSRVPipe&) = delete;

  // --- Pool and loop (server/) ---

  /// Builds the pool, announces readiness, makes the start-up run and serves until the loop ends.
  /// \returns 0, at once if the pool cannot be built.
  std::uint32_t StartSRV();

  /// Serves until every instance is closed or an error ends the loop. \returns 0.
  std::uint32_t RunSrvLoop();

  /// \returns 1 if the connect is pending, 0 if a client is there already or the connect failed.
  std::uint32_t ConnectToNewClient(HANDLE hPipe, OVERLAPPED* overlapped);

  /// Drops the client of one instance and starts a new connect on the same handle.
  void DisconnectAndReconnect(int conId);

  /// Closes all instances. A client that does not read holds this up for at most two seconds in
  /// all.
  void CloseSRV();

  /// Takes the board-control lock; waits at most 30000 ms. \returns the wait's result, or
  /// ERROR_INVALID_HANDLE (6) without waiting when there is no lock.
  std::uint32_t BCLockWait();

  /// \returns 0, or 1 when there is no lock.
  std::uint32_t BCLockRelease();

  // --- Request reader (codec/) ---
  //
  // Each takes one value off the request and returns 0, or BUFFER_OVERFLOW when the request holds
  // too few bytes. A fixed-size read that fails leaves the cursor where it is.

  SrvResult ReadByte(int conId, std::uint8_t& value);
  SrvResult ReadShort(int conId, std::uint16_t& value);
  SrvResult ReadLong(int conId, std::uint32_t& value);
  SrvResult ReadLongLong(int conId, std::uint64_t& value);

  /// A 32-bit length n and n bytes of text. n = 0 is the empty text; n = 65535 is an absent one and
  /// sets `text` to null. A length above what is left, or a text that does not fit the buffer with
  /// its terminator, fails and leaves the cursor behind the length.
  ///
  /// \param text the caller's buffer on entry; untouched behind the terminator
  /// \param capacity bytes of that buffer, terminator included
  SrvResult ReadString(int conId, char*& text, std::uint32_t capacity);

  /// As ReadString; the bytes may hold several zero-terminated texts. `length` receives n, or 0 for
  /// an absent value.
  SrvResult ReadMultiString(int conId, char*& text, std::uint32_t capacity, std::uint32_t& length);

  /// A 32-bit length n and n bytes, with the same two special lengths; both report length 0.
  SrvResult ReadBuffer(int conId, void* destination, std::uint32_t capacity, std::uint32_t& length);

  // --- Reply writer (codec/) ---
  //
  // An appender returns 0, or BUFFER_OVERFLOW when the value does not fit the reply buffer. A Send
  // appends mark, result and values in the order of its arguments and writes the whole reply; at
  // the first append that fails it stops unsent. A second Send for one request appends to the
  // first reply and writes everything again.

  SrvResult AddByte(int conId, std::uint8_t value);
  SrvResult AddShort(int conId, std::uint16_t value);
  SrvResult AddLong(int conId, std::uint32_t value);
  SrvResult AddLongLong(int conId, std::uint64_t value);
  /// A 32-bit length and the text without its terminator. On overflow the length stays appended.
  SrvResult AddString(int conId, const char* text);
  /// A 32-bit length and `size` bytes, which may hold several zero-terminated texts.
  SrvResult AddString(int conId, const void* data, std::uint32_t size);
  SrvResult AddBuffer(int conId, const void* data, std::uint32_t size);

  SrvResult Send(int conId, std::uint32_t result);
  SrvResult Send(int conId, std::uint32_t result, std::uint32_t v1);
  SrvResult Send(int conId, std::uint32_t result, std::uint32_t v1, std::uint32_t v2);
  SrvResult Send(int conId, std::uint32_t result, std::uint32_t v1, std::uint32_t v2,
                 std::uint32_t v3);
  SrvResult Send(int conId, std::uint32_t result, std::uint32_t v1, std::uint32_t v2,
                 std::uint32_t v3, std::uint32_t v4);
  SrvResult Send(int conId, std::uint32_t result, std::uint32_t v1, std::uint32_t v2,
                 std::uint32_t v3, std::uint32_t v4, std::uint32_t v5, std::uint32_t v6);
  SrvResult Send(int conId, std::uint32_t result, const char* text);
  SrvResult Send(int conId, std::uint32_t result, const char* text, std::uint32_t v1);
  SrvResult Send(int conId, std::uint32_t result, const char* text1, std::uint32_t v1,
                 const char* text2, std::uint32_t v2);
  /// The length stands once more behind the data; that is part of the format.
  SrvResult SendMultiByteString(int conId, std::uint32_t result, const void* data,
                                std::uint32_t size);
  SrvResult SendBuffer(int conId, std::uint32_t result, const void* data, std::uint32_t size);

  /// Writes what was built and moves the instance on; the last step of every Send and of replies
  /// that a handler composes itself. A write that fails is not reported: the loop finds the
  /// instance on its next pass and reconnects it.
  ///
  /// \returns what the write call returned (1 when it completed at once, else 0), for the trace.
  std::uint32_t WriteReply(int conId);

  // --- Commands of the loop itself (server/) ---

  /// Command 16. Does nothing. Reply: Send(long) with 0, by the loop.
  SrvResult NoOperation(int conId);
  /// Command 253. Request: long confirmation. 253 closes every instance, the requester's too, so no
  /// reply arrives and the server ends; any other value is answered with 1255 and changes nothing.
  /// Without a confirmation the client gets 5, and then 5 again followed by 8602.
  SrvResult StopServer(int conId);

  // --- Registry commands (registry/) ---
  //
  // Texts are at most 8159 bytes; a longer one cannot be read (8602). An absent text reaches the
  // registry primitive as a missing argument (87). Results are registry codes, unchanged, or 8604
  // when the registry call raised. Changes are confined to the permitted tree: 5 outside it, with
  // an event in the event log.

  /// Command 1. Request: string key path. Reply: Send(long).
  ///
  /// Kept: the tree that goes is the one named by the path below the key of the same path
  /// (path\path); the key itself stays.
  SrvResult Reg_DelKey(int conId);
  /// Command 2. Request: string key path. Reply: Send(long). Missing parents are created.
  SrvResult Reg_CreateKey(int conId);
  /// Command 3. Request: string key path, value name, value text. Reply: Send(long). The key must
  /// exist (2 otherwise); the value is written as REG_SZ.
  SrvResult Reg_SetValue(int conId);
  /// Command 18. Request: string key path, value name. Reply: Send(long).
  SrvResult Reg_DelValue(int conId);
  /// Command 21. Request: string key path, long index. Reply: Send(long, TCHAR, long) with the
  /// subkey's name and length; Send(long, long) with the code (259 past the end) and the length.
  SrvResult Reg_EnumKey(int conId);
  /// Command 22. Request: string key path, value name. Reply: Send(long, TCHAR, long) with the data
  /// up to its first zero byte, and its length less one; Send(long, long) with the code and that
  /// length otherwise (234: the length that is needed, less one).
  SrvResult Reg_GetValue(int conId);
  /// Command 23. Request: string key path, long index. Reply: Send(long, TCHAR, long, TCHAR, long)
  /// with name, its length, data up to its first zero byte, its length; Send(long, long, long) with
  /// the code and both lengths, 8602 when they add up to more than 8160.
  SrvResult Reg_EnumValue(int conId);
  /// Command 28. As Reg_SetValue, behind a long root key that must be 0x80000002 (5 otherwise).
  SrvResult Reg_SetValueBase(int conId);
  /// Command 29. As Reg_CreateKey, behind a long root key that must be 0x80000002 (5 otherwise).
  SrvResult Reg_CreateKeyBase(int conId);
  /// Command 30. As Reg_DelKey, behind a long root key that must be 0x80000002 (5 otherwise).
  SrvResult Reg_DelKeyBase(int conId);

 private:
  // What the loop does with an instance after its pending operation has been looked at.
  enum class Next { Act, NextPass, EndLoop };

  Next CompletePending(int conId);
  void TraceLostClient(int conId, bool success, std::uint32_t count);
  void WriteSecondReply(int conId);
  void StartRead(int conId);
  void ServeRequest(int conId);
  void Dispatch(int conId, SrvResult& lResult, SrvResult& sendResult);
  std::uint32_t NextInstance();
  void BeginConnect(int conId);
  void RetryFailedConnects();
  bool BuildPool();
  bool AllClosed() const;

  SECURITY_ATTRIBUTES* const pipeSecurity_;
  std::uint32_t lastServed_ = kPipeInstances - 1;
  std::uint32_t connectError_ = 0;  // of the last ConnectToNewClient; 0 when it went well
  std::uint32_t waitError_ = 0;     // of the last wait
  std::uint32_t passesWithoutWait_ = 0;
  int failedConnects_ = 0;     // instances with fConnectFailed
  std::uint64_t retryAt_ = 0;  // clock time at which they are tried again
  bool shutdown_ = false;
  std::uint32_t outputs_[2] = {};  // of a command that the dispatch answers with outputs
};

#endif  // SERVER_QORLIXSRVPIPE_H_
