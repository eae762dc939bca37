#include "board/BoardCommandTable.h"

#include "board/boardsvc32.h"
#include "trace/Zqotrc.h"

namespace board_commands {

constexpr BoardCommand kEnumBoard = {
    .function = "BC_EnumBoard: ",
    .operation = "BRDX_EnumBoardExBL",
    .raised = "BRDX_EnumBoardExBL",
    .request = {Text(kInDeviceId, "<< result = 0x%x DeviceId"), Number("<< result = 0x%x iValue"),
                Room(0, "<< result = 0x%x BoardLen"), Room(1, "<< result = 0x%x BoardMapLen"),
                Room(2, "<< result = 0x%x AdapterLen")},
    .call =
        [](BoardCall& c) {
          return BRDX_EnumBoardExBL(c.Text(kInDeviceId), c.number, c.Buffer(0), c.Length(0),
                                    c.Buffer(1), c.Length(1), c.Buffer(2), c.Length(2),
                                    /*zero=*/0);
        },
    .success = BoardSuccess::kComposed,
    .reply = {Zero(), TextAndLength(0), TextAndLength(1), TextAndLength(2)},
    .tooLong = {Overflow(), Length(0), Length(1), Length(2)},
    // Kept: the third long is the capacity of the adapter buffer, not the length that the library
    // wrote, and the board-map length stands last. Clients take these fields by position.
    .failure = {Result(), Length(0), Capacity(), Length(1)},
};

constexpr BoardCommand kEnumInstBoard = {
    .function = "BC_EnumInstBoard: ",
    .operation = "BRDX_EnumInstBoardBL",
    .raised = "BRDX_EnumInstBoardBL",
    .request = {Number("<< result = 0x%x iValue"), Room(0, "<< result = 0x%x BoardLen"),
                Room(1, "<< result = 0x%x DeviceIdLen"), Room(2, "<< result = 0x%x NetTypeLen"),
                Room(3, "<< result = 0x%x HardwareIdLen"),
                Room(4, "<< result = 0x%x HardwareInstanceIdLen"),
                Room(5, "<< result = 0x%x BoardMapLen")},
    .call =
        [](BoardCall& c) {
          return BRDX_EnumInstBoardBL(c.number, c.Buffer(0), c.Length(0), c.Buffer(1), c.Length(1),
                                      c.Buffer(2), c.Length(2), c.Buffer(3), c.Length(3),
                                      c.Buffer(4), c.Length(4), c.Buffer(5), c.Length(5), &c.value);
        },
    .success = BoardSuccess::kComposed,
    .reply = {Zero(), TextAndLength(0), TextAndLength(1), TextAndLength(2), TextAndLength(3),
              TextAndLength(4), TextAndLength(5), Value()},
    .tooLong = {Overflow(), Length(0), Length(1), Length(2), Length(3), Length(4), Length(5)},
    // Kept: the lengths of hardware id and hardware instance id are left out.
    .failure = {Result(), Length(0), Length(1), Length(2), Length(5)},
};

constexpr BoardCommand kEnumAvailableBoard = {
    .function = "BC_EnumAvailableBoard: ",
    .operation = "BRDX_EnumAvailableBoardsBL",
    .raised = "BRDX_EnumAvailableBoardsBL",
    .request = {Number("<< result = 0x%x iValue"), Room(0, "<< result = 0x%x BoardLen"),
                Room(1, "<< result = 0x%x DeviceIdLen")},
    .call =
        [](BoardCall& c) {
          return BRDX_EnumAvailableBoardsBL(c.number, c.Buffer(0), c.Length(0), c.Buffer(1),
                                            c.Length(1), &c.value);
        },
    .success = BoardSuccess::kComposed,
    .reply = {Zero(), TextAndLength(0), TextAndLength(1), Value()},
    .tooLong = {Overflow(), Length(0), Length(1)},
    .failure = {Result(), Length(0), Length(1)},
};

constexpr BoardCommand kEnumAdapters = {
    .function = "BC_EnumAdapters: ",
    .operation = "BRDX_EnumAdaptersBL",
    .raised = "BRDX_EnumAdaptersBL",
    .request = {Number("<< result = 0x%x iValue"), Room(0, "<< result = 0x%x pcbAdapterNameLen"),
                Room(1, "<< result = 0x%x BoardMapLen")},
    .call =
        [](BoardCall& c) {
          return BRDX_EnumAdaptersBL(c.number, c.Buffer(0), c.Length(0), c.Buffer(1), c.Length(1),
                                     &c.byte);
        },
    .success = BoardSuccess::kComposed,
    .reply = {Zero(), TextAndLength(0), TextAndLength(1), Byte()},
    // Kept: an answer that does not fit is told without its lengths.
    .tooLong = {Overflow()},
    .failure = {Result(), Length(0), Length(1)},
};

constexpr BoardCommand kEnumConfiguration = {
    .function = "BC_EnumConfiguration: ",
    .operation = "BRDX_EnumConfigurationBL",
    .raised = "BRDX_EnumConfigurationBL",
    .request = {Number("<< result = 0x%x iValue"), Text(kInBoard, "<< result = 0x%x BoardName"),
                Text(kInBoardMap, "<< result = 0x%x BoardMap"),
                Text(kInDeviceId, "<< result = 0x%x DeviceId"),
                Text(kInHardwareInstanceId, "<< result = 0x%x HardwareInstanceId"),
                Room(0, "<< result = 0x%x ConfigurationLen"),
                Room(1, "<< result = 0x%x ProtocolTypeLen"),
                Room(2, "<< result = 0x%x L4ProtocolLen"), Room(3, "<< result = 0x%x UnitLen")},
    .call =
        [](BoardCall& c) {
          return BRDX_EnumConfigurationBL(c.number, c.Text(kInBoard), c.Text(kInBoardMap),
                                          c.Text(kInDeviceId), c.Text(kInHardwareInstanceId),
                                          c.Buffer(0), c.Length(0), c.Buffer(1), c.Length(1),
                                          c.Buffer(2), c.Length(2), c.Buffer(3), c.Length(3));
        },
    .success = BoardSuccess::kComposed,
    .reply = {Zero(), TextAndLength(0), TextAndLength(1), TextAndLength(2), TextAndLength(3)},
    .tooLong = {Overflow(), Length(0), Length(1), Length(2), Length(3)},
    .failure = {Result(), Length(0), Length(1), Length(2), Length(3)},
};

constexpr BoardCommand kBoardGetMap = {
    .function = "BC_BoardGetMap: ",
    .operation = "BRDX_BoardGetMapBL",
    .raised = "BRDX_BoardGetMapBL",
    .request = {Text(kInDeviceId, "<< result = 0x%x DeviceID"),
                Text(kInAdapter, "<< result = 0x%x Adapter"),
                Text(kInHardwareId, "<< result = 0x%x HardwareId"),
                Room(0, "<< result = 0x%x BoardMapIdLen")},
    .call =
        [](BoardCall& c) {
          return BRDX_BoardGetMapBL(c.Text(kInDeviceId), c.Text(kInAdapter), c.Text(kInHardwareId),
                                    c.Buffer(0), c.Length(0));
        },
    .success = BoardSuccess::kText,
    .tooLong = {Overflow(), Length(0)},
    .failure = {Result(), Length(0)},
    .traceResult =
        [](const BoardCommand& row, const BoardCall& call, std::uint32_t result) {
          ZQ_TRACE(TRC_RESULT, row.function, "<< BRDX_BoardGetMapBL BoardMapLen=0x%x result = 0x%x",
                   call.outs[0].length, result);
        },
};

constexpr BoardCommand kGetBoardInfo = {
    .function = "BC_GetBoardInfo: ",
    .operation = "BRDX_GetBoardInfoBL",
    .raised = "BRDX_GetBoardInfoBL",
    .request = {Number("<< result = 0x%x InfoType"), Text(kInBoard, "<< result = 0x%x BoardName"),
                Text(kInBoardMap, "<< result = 0x%x BoardMap"),
                Text(kInDeviceId, "<< result = 0x%x DeviceId"),
                Text(kInHardwareInstanceId, "<< result = 0x%x HardwareInstanceId"),
                Room(0, "<< result = 0x%x ValueLen")},
    .call =
        [](BoardCall& c) {
          return BRDX_GetBoardInfoBL(c.number, c.Text(kInBoard), c.Text(kInBoardMap),
                                     c.Text(kInDeviceId), c.Text(kInHardwareInstanceId),
                                     c.Buffer(0), c.Length(0));
        },
    .success = BoardSuccess::kText,
    .tooLong = {Overflow(), Length(0)},
    .failure = {Result(), Length(0)},
};

constexpr BoardCommand kGetBoardInfoEx = {
    .function = "BC_GetBoardInfoEx: ",
    .operation = "BRDX_GetBoardInfoExBL",
    .raised = "BRDX_GetBoardInfoBL",  // Kept: an exception goes under the sibling's name.
    .request = {Number("<< result = 0x%x InfoType"), Text(kInBoard, "<< result = 0x%x BoardName"),
                Text(kInBoardMap, "<< result = 0x%x BoardMap"),
                Text(kInHardwareInstanceId, "<< result = 0x%x HardwareInstanceId"),
                Room(0, "<< result = 0x%x BufferLen")},
    .call =
        [](BoardCall& c) {
          return BRDX_GetBoardInfoExBL(c.number, c.Text(kInBoard), c.Text(kInBoardMap),
                                       c.Text(kInHardwareInstanceId),
                                       reinterpret_cast<std::uint8_t*>(c.Buffer(0)), c.Length(0));
        },
    .success = BoardSuccess::kBuffer,
    .tooLong = {Overflow(), Length(0)},
    .failure = {Result(), Length(0)},
    // Kept: a length with its top bit set passes the bound and reaches the library as it is.
    .bound = BoardBound::kSigned,
};

constexpr BoardCommand kScan = {
    .function = "BC_Scan: ",
    .operation = "BRDX_ScanBL",
    .raised = "BRDX_ScanBL",
    .call = [](BoardCall&) { return BRDX_ScanBL(); },
};

constexpr BoardCommand kCreateAllLogdevices = {
    .function = "BC_CreateAllLogdevices: ",
    .operation = "BRDX_CreateAllLogdevicesBL",
    .raised = "BRDX_CreateAllLogdevicesBL",
    .call = [](BoardCall&) { return BRDX_CreateAllLogdevicesBL(); },
};

constexpr BoardCommand kHasUninitializedInstances = {
    .function = "BC_HasUninitializedInstances: ",
    .operation = "BRDX_HasUninitializedInstancesBL",
    .raised = "BRDX_HasUninitializedInstancesBL",
    .call = [](BoardCall&) { return BRDX_HasUninitializedInstancesBL(); },
};

constexpr BoardCommand kUpdateLogDevicesForDevice = {
    .function = "BC_UpdateLogDevicesForDevice: ",
    .operation = "BRDX_SetParameterData",  // Kept: the name that its result has always had.
    .raised = "BRDX_UpdateLogdevicesForDeviceBL",
    .request = {Text(kInDeviceId, "<< result = 0x%x DeviceId"),
                Text(kInHardwareId, "<< result = 0x%x HardwareId")},
    .call =
        [](BoardCall& c) {
          return BRDX_UpdateLogdevicesForDeviceBL(c.Text(kInDeviceId), c.Text(kInHardwareId));
        },
};

}  // namespace board_commands
