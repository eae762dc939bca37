#ifndef BOARD_BOARDCOMMANDTABLE_H_
#define BOARD_BOARDCOMMANDTABLE_H_

#include "board/BoardCommand.h"

/// The twelve board-control commands, each in the order request, call, answers.
namespace board_commands {

extern const BoardCommand kEnumBoard;
extern const BoardCommand kEnumInstBoard;
extern const BoardCommand kEnumAvailableBoard;
extern const BoardCommand kEnumAdapters;
extern const BoardCommand kEnumConfiguration;
extern const BoardCommand kBoardGetMap;
extern const BoardCommand kGetBoardInfo;
extern const BoardCommand kGetBoardInfoEx;
extern const BoardCommand kScan;
extern const BoardCommand kCreateAllLogdevices;
extern const BoardCommand kHasUninitializedInstances;
extern const BoardCommand kUpdateLogDevicesForDevice;

}  // namespace board_commands

#endif  // BOARD_BOARDCOMMANDTABLE_H_
