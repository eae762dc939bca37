#include <cstring>

#include "client/BoardCalls.h"
#include "client/capi/Handle.h"

namespace {

using client::BoardCalls;
using client::QorlixClient;
using client::capi::BadArgument;
using client::capi::Run;

qorlix_text_value Keep(qorlix_client& handle, const client::BoardText& text) {
  return handle.texts.Keep(text.text, text.length);
}

client::BoardSelection SelectionOf(const qorlix_board_selection* of) {
  if (of == nullptr) return {};
  return {of->board, of->board_map, of->device_id, of->hardware_instance_id};
}

client::Guid GuidOf(const qorlix_guid& guid) {
  client::Guid made{guid.data1, guid.data2, guid.data3, {}};
  std::memcpy(made.data4.data(), guid.data4, sizeof(guid.data4));
  return made;
}

constexpr qorlix_text_value kNothing = {"", 0, 0};

// The commands that have one text.
template <typename Call>
qorlix_status RunForText(qorlix_client* client, qorlix_text_value* text, Call call) {
  if (text == nullptr) return BadArgument(client);
  *text = kNothing;
  client::BoardValue value;
  return Run(
      client, [&](QorlixClient& to) { return call(BoardCalls(to), value); },
      [&](qorlix_client& handle) { *text = Keep(handle, value.content); });
}

std::uint32_t AskedAgain(const client::BoardAnswer& answer) { return answer.askedAgain ? 1 : 0; }

}  // namespace

extern "C" {

qorlix_status QORLIX_CALL qorlix_bc_enum_board(qorlix_client* client, const char* device_id,
                                               std::uint32_t index, qorlix_board* entry) noexcept {
  if (entry == nullptr) return BadArgument(client);
  *entry = {kNothing, kNothing, kNothing, 0};
  client::BoardEntry found;
  return Run(
      client,
      [&](QorlixClient& to) { return BoardCalls(to).BC_EnumBoard(device_id, index, found); },
      [&](qorlix_client& handle) {
        *entry = {Keep(handle, found.board), Keep(handle, found.boardMap),
                  Keep(handle, found.adapter), AskedAgain(found)};
      });
}

qorlix_status QORLIX_CALL qorlix_bc_enum_inst_board(qorlix_client* client, std::uint32_t index,
                                                    qorlix_inst_board* entry) noexcept {
  if (entry == nullptr) return BadArgument(client);
  *entry = {kNothing, kNothing, kNothing, kNothing, kNothing, kNothing, 0, 0};
  client::InstBoardEntry found;
  return Run(
      client, [&](QorlixClient& to) { return BoardCalls(to).BC_EnumInstBoard(index, found); },
      [&](qorlix_client& handle) {
        *entry = {Keep(handle, found.board),
                  Keep(handle, found.deviceId),
                  Keep(handle, found.netType),
                  Keep(handle, found.hardwareId),
                  Keep(handle, found.hardwareInstanceId),
                  Keep(handle, found.boardMap),
                  found.value,
                  AskedAgain(found)};
      });
}

qorlix_status QORLIX_CALL qorlix_bc_enum_available_board(qorlix_client* client, std::uint32_t index,
                                                         qorlix_available_board* entry) noexcept {
  if (entry == nullptr) return BadArgument(client);
  *entry = {kNothing, kNothing, 0, 0};
  client::AvailableBoardEntry found;
  return Run(
      client, [&](QorlixClient& to) { return BoardCalls(to).BC_EnumAvailableBoard(index, found); },
      [&](qorlix_client& handle) {
        *entry = {Keep(handle, found.board), Keep(handle, found.deviceId), found.value,
                  AskedAgain(found)};
      });
}

qorlix_status QORLIX_CALL qorlix_bc_enum_adapters(qorlix_client* client, std::uint32_t index,
                                                  qorlix_adapter* entry) noexcept {
  if (entry == nullptr) return BadArgument(client);
  *entry = {kNothing, kNothing, 0, 0};
  client::AdapterEntry found;
  return Run(
      client, [&](QorlixClient& to) { return BoardCalls(to).BC_EnumAdapters(index, found); },
      [&](qorlix_client& handle) {
        *entry = {Keep(handle, found.adapterName), Keep(handle, found.boardMap), found.value,
                  AskedAgain(found)};
      });
}

qorlix_status QORLIX_CALL qorlix_bc_enum_configuration(qorlix_client* client, std::uint32_t index,
                                                       const qorlix_board_selection* of,
                                                       qorlix_configuration* entry) noexcept {
  if (entry == nullptr) return BadArgument(client);
  *entry = {kNothing, kNothing, kNothing, kNothing, 0};
  client::ConfigurationEntry found;
  return Run(
      client,
      [&](QorlixClient& to) {
        return BoardCalls(to).BC_EnumConfiguration(index, SelectionOf(of), found);
      },
      [&](qorlix_client& handle) {
        *entry = {Keep(handle, found.configuration), Keep(handle, found.protocolType),
                  Keep(handle, found.layer4Protocol), Keep(handle, found.unit), AskedAgain(found)};
      });
}

qorlix_status QORLIX_CALL qorlix_bc_board_get_map(qorlix_client* client, const char* device_id,
                                                  const char* adapter, const char* hardware_id,
                                                  qorlix_text_value* board_map) noexcept {
  return RunForText(client, board_map, [=](BoardCalls calls, client::BoardValue& value) {
    return calls.BC_BoardGetMap(device_id, adapter, hardware_id, value);
  });
}

qorlix_status QORLIX_CALL qorlix_bc_get_board_info(qorlix_client* client, std::uint32_t info_type,
                                                   const qorlix_board_selection* of,
                                                   qorlix_text_value* text) noexcept {
  return RunForText(client, text, [=](BoardCalls calls, client::BoardValue& value) {
    return calls.BC_GetBoardInfo(info_type, SelectionOf(of), value);
  });
}

qorlix_status QORLIX_CALL qorlix_bc_get_board_info_ex(qorlix_client* client,
                                                      std::uint32_t info_type,
                                                      const qorlix_board_selection* of,
                                                      qorlix_text_value* data) noexcept {
  return RunForText(client, data, [=](BoardCalls calls, client::BoardValue& value) {
    return calls.BC_GetBoardInfoEx(info_type, SelectionOf(of), value);
  });
}

qorlix_status QORLIX_CALL qorlix_bc_scan(qorlix_client* client) noexcept {
  return Run(client, [](QorlixClient& to) { return BoardCalls(to).BC_Scan(); });
}

qorlix_status QORLIX_CALL qorlix_bc_create_all_logdevices(qorlix_client* client) noexcept {
  return Run(client, [](QorlixClient& to) { return BoardCalls(to).BC_CreateAllLogdevices(); });
}

qorlix_status QORLIX_CALL qorlix_bc_has_uninitialized_instances(qorlix_client* client) noexcept {
  return Run(client,
             [](QorlixClient& to) { return BoardCalls(to).BC_HasUninitializedInstances(); });
}

qorlix_status QORLIX_CALL qorlix_bc_update_log_devices_for_device(
    qorlix_client* client, const char* device_id, const char* hardware_id) noexcept {
  return Run(client, [=](QorlixClient& to) {
    return BoardCalls(to).BC_UpdateLogDevicesForDevice(device_id, hardware_id);
  });
}

qorlix_status QORLIX_CALL qorlix_bc_plausibilitaet(qorlix_client* client) noexcept {
  return Run(client, [](QorlixClient& to) { return BoardCalls(to).BC_PlausibilitaetBL(); });
}

qorlix_status QORLIX_CALL qorlix_register_for_device_change_notifications(
    qorlix_client* client, const char* device_id, const qorlix_guid* guid) noexcept {
  if (guid == nullptr) return BadArgument(client);
  return Run(client, [=](QorlixClient& to) {
    return BoardCalls(to).RegisterForDeviceChangeNotifications(device_id, GuidOf(*guid));
  });
}

qorlix_status QORLIX_CALL qorlix_unregister_for_device_change_notifications(
    qorlix_client* client, const char* device_id, const qorlix_guid* guid) noexcept {
  if (guid == nullptr) return BadArgument(client);
  return Run(client, [=](QorlixClient& to) {
    return BoardCalls(to).UnregisterForDeviceChangeNotifications(device_id, GuidOf(*guid));
  });
}

qorlix_status QORLIX_CALL qorlix_get_device_change(qorlix_client* client, const char* device_id,
                                                   qorlix_device_change* change) noexcept {
  if (change == nullptr) return BadArgument(client);
  *change = {kNothing, {}, 0};
  client::DeviceChange found;
  return Run(
      client, [&](QorlixClient& to) { return BoardCalls(to).GetDeviceChange(device_id, found); },
      [&](qorlix_client& handle) {
        change->change = handle.texts.Keep(found.text, found.length);
        change->kind = found.kind;
        if (found.interfaceClass.size() == sizeof(change->interface_class)) {
          std::memcpy(&change->interface_class, found.interfaceClass.data(),
                      sizeof(change->interface_class));
        }
      });
}

qorlix_status QORLIX_CALL qorlix_get_device_state(qorlix_client* client, const char* hardware_id,
                                                  std::uint32_t option, std::uint32_t* status,
                                                  std::uint32_t* problem) noexcept {
  if (status == nullptr || problem == nullptr) return BadArgument(client);
  *status = *problem = 0;
  client::DeviceState state;
  return Run(
      client,
      [&](QorlixClient& to) { return BoardCalls(to).GetDeviceStateEx(hardware_id, option, state); },
      [&](qorlix_client&) {
        *status = state.status;
        *problem = state.problem;
      });
}

}  // extern "C"

static_assert(QORLIX_NO_OPTION == client::kNoOption);
