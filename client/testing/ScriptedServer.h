#ifndef CLIENT_TESTING_SCRIPTEDSERVER_H_
#define CLIENT_TESTING_SCRIPTEDSERVER_H_

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "client/ServerIdentity.h"

namespace client {

/// Bytes written as hex digits, with blanks where they help the reader, and back (upper case, no
/// blanks).
std::vector<std::uint8_t> FromHex(const std::string& hex);
std::string ToHex(const void* data, std::size_t size);

/// A pipe server that answers each request with what the test scripted for it.
///
/// On Windows a thread serves a real pipe under a name of its own. Natively there is no pipe: the
/// fake of PipeTransport plays the same script, and a reply that would be waited for in vain times
/// out at once. A request beyond the script is answered by closing the connection.
class ScriptedServer {
 public:
  ScriptedServer();
  /// Natively only: under this name, rather than under one of its own.
  explicit ScriptedServer(std::string pipeName);
  ~ScriptedServer();
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  /// The next request is answered with these bytes, one after another and apart in time.
  void Answers(std::initializer_list<std::string> parts);
  /// The same; then the connection is closed. Without parts it is closed at once.
  void AnswersAndCloses(std::initializer_list<std::string> parts);
  /// The next request stays without an answer.
  void StaysSilent() { Answers({}); }

  /// From here on, nobody can connect: the pipe does not exist, or its one instance is in use.
  void IsGone();
  void IsBusy();

  /// The server ends and starts anew: the connection that there is breaks.
  void Restarts();
  /// Natively only: the connection breaks when the next request has been taken in part.
  void BreaksWithinTheNextRequest();
  /// Natively only: what clients are told of who serves the pipe.
  void IsServedBy(const PipePeer& peer);

  const char* PipeName() const;
  /// The requests in hex, as the server read them: at most 8192 bytes each.
  std::vector<std::string> Requests() const;
  /// How many clients have connected.
  int Connections() const;

  struct State;

 private:
  std::unique_ptr<State> state_;
};

}  // namespace client

#endif  // CLIENT_TESTING_SCRIPTEDSERVER_H_
