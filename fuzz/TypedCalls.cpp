#include "fuzz/TypedCalls.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <numeric>
#include <string_view>

#include "client/ActionCalls.h"
#include "client/BoardCalls.h"
#include "client/QorlixClient.h"
#include "client/capi/qorlixclient.h"

namespace typed_calls {
namespace {

using client::QorlixClient;
using client::Result;

void Require(bool holds) {
  if (!holds) std::abort();
}

volatile unsigned g_sum;

// --- C++ ---

// Reads what was handed out; it points into the client.
void Look(const QorlixClient& from, const void* data, std::size_t size) {
  if (size == 0) return;
  const auto* const bytes = static_cast<const std::uint8_t*>(data);
  const auto* const begin = reinterpret_cast<const std::uint8_t*>(&from);
  Require(bytes >= begin && bytes + size <= begin + sizeof(from));
  g_sum = std::accumulate(bytes, bytes + size, 0u);
}
void Look(const QorlixClient& from, std::string_view text) { Look(from, text.data(), text.size()); }
void Look(const QorlixClient& from, client::Bytes bytes) { Look(from, bytes.data(), bytes.size()); }

template <typename Entry>
void LookAtEntry(const QorlixClient& from, const Result& result, Entry& entry) {
  for (const client::NamedText& text : entry.Texts()) {
    Look(from, text.text->text);
    Require(result.ok() || text.text->text.empty());
  }
  Require(result.fromServer() || !entry.told);
}

void LookAtValue(const QorlixClient& from, const Result& result, const client::BoardValue& value) {
  Look(from, value.content.text);
  Require(result.ok() || value.content.text.empty());
}

void LookAtRegistry(const QorlixClient& from, const Result& result,
                    const client::RegistryEntry& entry) {
  Look(from, entry.name);
  Look(from, entry.data);
  Require(result.ok() || (entry.name.empty() && entry.data.empty()));
}

using CppCall = void (*)(QorlixClient& c);
constexpr CppCall kCppCalls[] = {
    [](QorlixClient& c) { (void)c.NoOperation(); },
    [](QorlixClient& c) { (void)c.StopServer(); },
    [](QorlixClient& c) { (void)c.StopServer(1); },
    [](QorlixClient& c) { (void)c.Reg_CreateKey("k"); },
    [](QorlixClient& c) { (void)c.Reg_SetValueBase(1, "k", "n", nullptr); },
    [](QorlixClient& c) {
      client::RegistryData data;
      const Result result = c.Reg_GetValue("k", "n", data);
      Look(c, data.text);
      Require(result.ok() || data.text.empty());
    },
    [](QorlixClient& c) {
      client::RegistryEntry entry;
      LookAtRegistry(c, c.Reg_EnumKey("k", 0, entry), entry);
    },
    [](QorlixClient& c) {
      client::RegistryEntry entry;
      LookAtRegistry(c, c.Reg_EnumValue("k", 0, entry), entry);
    },
    [](QorlixClient& c) {
      client::BoardEntry entry;
      LookAtEntry(c, client::BoardCalls(c).BC_EnumBoard("d", 0, entry), entry);
    },
    [](QorlixClient& c) {
      client::InstBoardEntry entry;
      LookAtEntry(c, client::BoardCalls(c).BC_EnumInstBoard(0, entry), entry);
    },
    [](QorlixClient& c) {
      client::AvailableBoardEntry entry;
      LookAtEntry(c, client::BoardCalls(c).BC_EnumAvailableBoard(0, entry), entry);
    },
    [](QorlixClient& c) {
      client::AdapterEntry entry;
      LookAtEntry(c, client::BoardCalls(c).BC_EnumAdapters(0, entry), entry);
    },
    [](QorlixClient& c) {
      client::ConfigurationEntry entry;
      LookAtEntry(c, client::BoardCalls(c).BC_EnumConfiguration(0, {}, entry), entry);
    },
    [](QorlixClient& c) {
      client::BoardValue value;
      LookAtValue(c, client::BoardCalls(c).BC_BoardGetMap("d", "a", "h", value), value);
    },
    [](QorlixClient& c) {
      client::BoardValue value;
      LookAtValue(c, client::BoardCalls(c).BC_GetBoardInfo(1, {}, value), value);
    },
    [](QorlixClient& c) {
      client::BoardValue value;
      LookAtValue(c, client::BoardCalls(c).BC_GetBoardInfoEx(1, {}, value), value);
    },
    [](QorlixClient& c) { (void)client::BoardCalls(c).BC_PlausibilitaetBL(); },
    [](QorlixClient& c) {
      client::DeviceChange change;
      const Result result = client::BoardCalls(c).GetDeviceChange("d", change);
      Look(c, change.text);
      Look(c, change.interfaceClass);
      Require(change.interfaceClass.size() == (result.ok() ? 16u : 0u));
    },
    [](QorlixClient& c) {
      client::DeviceState state;
      (void)client::BoardCalls(c).GetDeviceStateEx("h", 1, state);
    },
    [](QorlixClient& c) {
      client::Information told;
      const Result result =
          client::BoardCalls(c).GetBoardInformation({.area1Size = 8, .area2Size = 8}, told);
      Look(c, told.area1);
      Look(c, told.area2);
      Require(result.ok() || (told.area1.empty() && told.area2.empty()));
    },
    [](QorlixClient& c) { (void)client::ActionCalls(c).Install("d", nullptr); },
    [](QorlixClient& c) {
      client::SecondSend second;
      const Result result = client::ActionCalls(c).InstallWdmDriver_32("s", "i", "t", 0, second);
      Require(result.fromServer() || !second.came);
    },
    [](QorlixClient& c) {
      client::SecondSend second;
      const Result result = client::ActionCalls(c).RunOnlinePanel_32(second);
      Require(result.fromServer() || !second.came);
    },
    [](QorlixClient& c) {
      client::AddedAddress added;
      const Result result = client::ActionCalls(c).AddIpAddress(1, 2, 3, added);
      Require(result.fromServer() || (added.nteContext == 0 && !added.second.came));
    },
    [](QorlixClient& c) {
      std::string_view shown;
      (void)client::ActionCalls(c).TestFunction("t", shown);
      Look(c, shown);
    },
};

// --- Plain C ---

void Look(const qorlix_text_value& value) {
  Require(value.text != nullptr && value.text[value.size] == '\0');
  g_sum = static_cast<unsigned>(std::strlen(value.text));
}

using CCall = void (*)(qorlix_client* c);
constexpr CCall kCCalls[] = {
    [](qorlix_client* c) {
      qorlix_text_value data;
      (void)qorlix_reg_get_value(c, "k", "n", &data);
      Look(data);
    },
    [](qorlix_client* c) {
      qorlix_text_value name;
      (void)qorlix_reg_enum_key(c, "k", 0, &name);
      Look(name);
    },
    [](qorlix_client* c) {
      qorlix_text_value name;
      qorlix_text_value data;
      (void)qorlix_reg_enum_value(c, "k", 0, &name, &data);
      Look(name);
      Look(data);
    },
    [](qorlix_client* c) {
      qorlix_board e;
      (void)qorlix_bc_enum_board(c, "d", 0, &e);
      for (const auto& text : {e.board, e.board_map, e.adapter}) Look(text);
    },
    [](qorlix_client* c) {
      qorlix_inst_board e;
      (void)qorlix_bc_enum_inst_board(c, 0, &e);
      for (const auto& text :
           {e.board, e.device_id, e.net_type, e.hardware_id, e.hardware_instance_id, e.board_map}) {
        Look(text);
      }
    },
    [](qorlix_client* c) {
      qorlix_available_board e;
      (void)qorlix_bc_enum_available_board(c, 0, &e);
      for (const auto& text : {e.board, e.device_id}) Look(text);
    },
    [](qorlix_client* c) {
      qorlix_adapter e;
      (void)qorlix_bc_enum_adapters(c, 0, &e);
      for (const auto& text : {e.adapter_name, e.board_map}) Look(text);
    },
    [](qorlix_client* c) {
      qorlix_configuration e;
      (void)qorlix_bc_enum_configuration(c, 0, nullptr, &e);
      for (const auto& text : {e.configuration, e.protocol_type, e.layer4_protocol, e.unit}) {
        Look(text);
      }
    },
    [](qorlix_client* c) {
      qorlix_text_value map;
      (void)qorlix_bc_board_get_map(c, "d", "a", "h", &map);
      Look(map);
    },
    [](qorlix_client* c) {
      qorlix_text_value data;
      (void)qorlix_bc_get_board_info_ex(c, 1, nullptr, &data);
      Look(data);
    },
    [](qorlix_client* c) {
      qorlix_device_change change;
      (void)qorlix_get_device_change(c, "d", &change);
      Look(change.change);
    },
    [](qorlix_client* c) {
      std::uint32_t ran = 7;
      (void)qorlix_run_online_panel(c, &ran);
      Require(ran <= 1);
    },
    [](qorlix_client* c) {
      std::uint32_t context = 7;
      std::uint32_t instance = 7;
      (void)qorlix_add_ip_address(c, 1, 2, 3, &context, &instance);
    },
    [](qorlix_client* c) {
      std::uint8_t reply[64];
      std::uint32_t size = 0;
      (void)qorlix_call(c, 22, "\0\0\0\0\0\0\0\0", 8, reply, sizeof(reply), &size);
      std::uint32_t last = 0;
      const std::uint8_t* const bytes = qorlix_last_reply(c, &last);
      if (bytes != nullptr) g_sum = std::accumulate(bytes, bytes + last, 0u);
      Require((bytes != nullptr) == (last != 0));
    },
};

}  // namespace

std::size_t Count() { return std::size(kCppCalls) + std::size(kCCalls); }

void Make(std::size_t index, const char* pipeName) {
  if (index < std::size(kCppCalls)) {
    const auto client = std::make_unique<QorlixClient>(pipeName);
    kCppCalls[index](*client);
    return;
  }
  qorlix_client* const client = qorlix_open(pipeName);
  kCCalls[index - std::size(kCppCalls)](client);
  qorlix_close(client);
}

}  // namespace typed_calls
