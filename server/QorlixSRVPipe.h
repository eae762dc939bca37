#ifndef SERVER_QORLIXSRVPIPE_H_
#define SERVER_QORLIXSRVPIPE_H_

#include <cstdint>
#include <memory>

#include "platform/WinTypes.h"
#include "server/PipeInstance.h"
#include "server/SrvResult.h"

class RestartResults;
class TurnOrder;

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

  // --- Board-control commands (board/) ---
  //
  // Each reads its request, makes one call into the board-control library under the board-control
  // lock, and answers. Texts are at most 8191 bytes, and an absent one reaches the library as a
  // null pointer. A length is the capacity that the client wants for an answer; above 8192 it
  // counts as 8192. Send(long) with 8604 answers a call that raised; any other failure carries the
  // library's result. An answer whose lengths add up to more than 8160 is refused with 8602 and the
  // lengths that are needed. In a reply, "text" is the text as the library wrote it, up to its
  // first zero byte, and the length behind it is the one that the library reported.

  /// Command 193. Request: string device id; long index, board-name length, board-map length,
  /// adapter length. Reply: 0, then text and length of board name, board map and adapter; too long:
  /// 8602 and the three lengths; failure: result, board-name length, 8192, board-map length.
  SrvResult BC_EnumBoard(int conId);
  /// Command 192. Request: long index and the lengths of board name, device id, net type, hardware
  /// id, hardware instance id, board map. Reply: 0, text and length of each, long state; too long:
  /// 8602 and the six lengths; failure: result and the lengths of board name, device id, net type
  /// and board map.
  SrvResult BC_EnumInstBoard(int conId);
  /// Command 194. Request: long index, board-name length, device-id length. Reply: 0, text and
  /// length of both, long value; too long and failure: code and both lengths.
  SrvResult BC_EnumAvailableBoard(int conId);
  /// Command 197. Request: long index, adapter-name length, board-map length. Reply: 0, text and
  /// length of both, one byte; too long: Send(long) with 8602; failure: result and both lengths.
  SrvResult BC_EnumAdapters(int conId);
  /// Command 196. Request: long index; string board name, board map, device id, hardware instance
  /// id; long lengths of configuration, protocol type, layer-4 protocol, unit. Reply: 0, text and
  /// length of the four; too long and failure: code and the four lengths.
  SrvResult BC_EnumConfiguration(int conId);
  /// Command 163. Request: string device id, adapter, hardware id; long board-map length. Reply:
  /// Send(long, TCHAR, long); too long and failure: code and the length.
  SrvResult BC_BoardGetMap(int conId);
  /// Command 195. Request: long info type; string board name, board map, device id, hardware
  /// instance id; long value length. Reply: as BC_BoardGetMap.
  SrvResult BC_GetBoardInfo(int conId);
  /// Command 207. Request: long info type; string board name, board map, hardware instance id; long
  /// buffer length, which is bounded as a signed number: from 2^31 on it reaches the library as it
  /// is. Reply: SendBuffer; too long and failure: code and the length.
  SrvResult BC_GetBoardInfoEx(int conId);
  /// Command 199. No fields. Reply: Send(long) with the library's result.
  SrvResult BC_Scan(int conId);
  /// Command 201. No fields. Reply: Send(long) with the library's result.
  SrvResult BC_CreateAllLogdevices(int conId);
  /// Command 88. No fields. Reply: Send(long) with the library's result.
  SrvResult BC_HasUninitializedInstances(int conId);
  /// Command 200. Request: string device id, hardware id. Reply: Send(long) with the library's
  /// result.
  SrvResult BC_UpdateLogDevicesForDevice(int conId);

  // --- Further commands of boards and devices (board/) ---

  /// Command 292. No fields. Scans, drops abandoned logical devices, unassigns every logical name
  /// whose logical device is gone, and rebuilds routes and logical devices, all under the
  /// board-control lock. Reply: Send(long) with what dropping the abandoned devices returned.
  ///
  /// \param conId kNoConnection: nothing is sent, and that result is returned.
  SrvResult BC_PlausibilitaetBL(int conId);
  static constexpr int kNoConnection = -1;
  /// Command 256. Request: string device id (at most 259 bytes, may be absent), GUID as long, two
  /// shorts and eight bytes. Reply: Send(long) with the library's result.
  SrvResult RegisterForDeviceChangeNotifications(int conId);
  /// Command 257. As command 256.
  SrvResult UnregisterForDeviceChangeNotifications(int conId);
  /// Command 258. Request: string device id (at most 259 bytes, may be absent). Reply: 0, byte
  /// kind, text with its length in front and behind, GUID; Send(long, long, long) with 8602, the
  /// length and 16 when the text is above 8160 bytes; else Send(long).
  SrvResult GetDeviceChange(int conId);
  /// Command 290. Request: string hardware id, long option (0xFFFFFFFF for none). Reply: 0, long
  /// status, long problem, both 0 when the device was not found; Send(long) with 8604.
  SrvResult GetDeviceStateEx(int conId);
  /// Command 191. Request: eight buffers: a block of at most 8160 bytes; three 32-bit values; a
  /// second block; the sizes of two output areas, at most 8192 each; a last 32-bit value. Of a
  /// value the first four bytes count, and a shorter one is extended with zeros. Reply: 0, buffer
  /// first area, buffer of 4 bytes, buffer second area, two longs; else Send(long).
  SrvResult GetBoardInformation(int conId);

  // --- Installation and maintenance actions (actions/) ---

  /// Command 5. Request: string device id (at most 259 bytes), string language extension (at most
  /// 259 bytes, may be absent). Runs the installer that the device's registry key names, from the
  /// system directory and without a guard, then the plausibility check. Reply: Send(long), by the
  /// loop, with the installer's result or the code of the step that failed (87: no device id).
  SrvResult Install(int conId);
  /// Command 6. As command 5 with a third string, the board (may be absent), and the deinstaller.
  /// Its library stays loaded, and no check follows.
  SrvResult Deinstall(int conId);
  /// Command 15. Request: string service, string INF file, string third (each at most 259 bytes,
  /// may be absent), long mode. Reply: Send(long), then that again followed by the loop's
  /// Send(long): the library's result, 0 when it lacks the export, 8604 when it raised. When it
  /// cannot be loaded a message box says so, and the one reply is 0.
  SrvResult InstallWdmDriver_32(int conId);
  /// Command 17. No fields. Reply: as command 15; 0 when the panel reports success, else the error
  /// that the look-up of its export left.
  SrvResult RunOnlinePanel_32(int conId);
  /// Command 288. Request: string log device, string event name (each at most 259 bytes). Starts a
  /// worker that restarts the board, files the result under the event name and sets that event.
  /// Reply: Send(long) with 0 once the worker runs; 87 for an absent text, 8602 when no worker can
  /// be started, both by the loop.
  SrvResult SilentRestart(int conId);
  /// Command 289. Request: string event name. Reply: Send(long) with the first result filed under
  /// it, which is taken off the list, or 259.
  SrvResult GetSilentRestartResult(int conId);
  /// Command 12. Request: long address, mask, interface index. Reply: Send(long, long, long), by
  /// the loop, with the result and the context and instance of the address; a failure is followed
  /// by the same again and Send(long). 8603 without library, 8601 without export, 8604 if it
  /// raised.
  SrvResult AddIpAddress(int conId);
  /// Command 13. Request: long context. Reply: Send(long), by the loop; codes as command 12.
  SrvResult DelIpAddress(int conId);
  /// Command 240. Request: string text (at most 259 bytes; absent is empty). Shows it in a message
  /// box and waits until that is closed. Reply: Send(long, TCHAR) with 999 and the text.
  SrvResult TestFunction(int conId);

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
  std::uint32_t ClientOf(int conId);
  std::uint32_t NextDue();
  void BeginConnect(int conId);
  void RetryFailedConnects();
  bool BuildPool();
  HANDLE CreatePipeInstance(const char* name, bool isFirst, std::uint32_t& error);
  bool AllClosed() const;

  SECURITY_ATTRIBUTES* const pipeSecurity_;
  const std::unique_ptr<TurnOrder> turns_;
  std::uint32_t connectError_ = 0;  // of the last ConnectToNewClient; 0 when it went well
  std::uint32_t waitError_ = 0;     // of the last wait
  std::uint32_t passesWithoutWait_ = 0;
  int failedConnects_ = 0;     // instances with fConnectFailed
  std::uint64_t retryAt_ = 0;  // clock time at which they are tried again
  bool shutdown_ = false;
  std::uint32_t outputs_[2] = {};  // of a command that the dispatch answers with outputs
  // Shared with the workers of silent restarts, so it lives as long as the last of them.
  const std::shared_ptr<RestartResults> restartResults_;
};

#endif  // SERVER_QORLIXSRVPIPE_H_
