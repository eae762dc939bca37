#ifndef SERVER_COMMANDTABLE_H_
#define SERVER_COMMANDTABLE_H_

#include "server/CommandCode.h"
#include "server/QorlixSRVPipe.h"

/// Who answers a command.
enum class Answer {
  Handler,          ///< the handler sends its reply; what it returns is sent only if nonzero
  Loop,             ///< the dispatch sends what the handler returns
  LoopWithOutputs,  ///< the dispatch sends it with two outputs; a failure is sent once more
  HandlerThenLoop,  ///< both send, so the client gets the reply, and then the reply twice
  Stop,             ///< the dispatch knows the steps
};

struct CommandRow {
  CommandCode code;
  Answer answer;
  SrvResult (CQorlixSRVPipe::*handler)(int conId);
};

/// \returns the command's row, or null when no command has this code.
const CommandRow* FindCommand(std::uint16_t code);

#endif  // SERVER_COMMANDTABLE_H_
