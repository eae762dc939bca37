#include "client/capi/Handle.h"

namespace {

using client::QorlixClient;
using client::capi::BadArgument;
using client::capi::Run;

constexpr qorlix_text_value kNothing = {"", 0, 0};

}  // namespace

extern "C" {

qorlix_status QORLIX_CALL qorlix_no_operation(qorlix_client* client) noexcept {
  return Run(client, [](QorlixClient& to) { return to.NoOperation(); });
}

qorlix_status QORLIX_CALL qorlix_stop_server(qorlix_client* client,
                                             std::uint32_t confirmation) noexcept {
  return Run(client, [=](QorlixClient& to) { return to.StopServer(confirmation); });
}

qorlix_status QORLIX_CALL qorlix_reg_create_key(qorlix_client* client, const char* key) noexcept {
  return Run(client, [=](QorlixClient& to) { return to.Reg_CreateKey(key); });
}

qorlix_status QORLIX_CALL qorlix_reg_del_key(qorlix_client* client, const char* key) noexcept {
  return Run(client, [=](QorlixClient& to) { return to.Reg_DelKey(key); });
}

qorlix_status QORLIX_CALL qorlix_reg_set_value(qorlix_client* client, const char* key,
                                               const char* name, const char* text) noexcept {
  return Run(client, [=](QorlixClient& to) { return to.Reg_SetValue(key, name, text); });
}

qorlix_status QORLIX_CALL qorlix_reg_get_value(qorlix_client* client, const char* key,
                                               const char* name, qorlix_text_value* data) noexcept {
  if (data == nullptr) return BadArgument(client);
  *data = kNothing;
  client::RegistryData found;
  return Run(
      client, [&](QorlixClient& to) { return to.Reg_GetValue(key, name, found); },
      [&](qorlix_client& handle) { *data = handle.texts.Keep(found.text, found.length); });
}

qorlix_status QORLIX_CALL qorlix_reg_del_value(qorlix_client* client, const char* key,
                                               const char* name) noexcept {
  return Run(client, [=](QorlixClient& to) { return to.Reg_DelValue(key, name); });
}

qorlix_status QORLIX_CALL qorlix_reg_enum_key(qorlix_client* client, const char* key,
                                              std::uint32_t index,
                                              qorlix_text_value* name) noexcept {
  if (name == nullptr) return BadArgument(client);
  *name = kNothing;
  client::RegistryEntry entry;
  return Run(
      client, [&](QorlixClient& to) { return to.Reg_EnumKey(key, index, entry); },
      [&](qorlix_client& handle) { *name = handle.texts.Keep(entry.name, entry.nameLength); });
}

qorlix_status QORLIX_CALL qorlix_reg_enum_value(qorlix_client* client, const char* key,
                                                std::uint32_t index, qorlix_text_value* name,
                                                qorlix_text_value* data) noexcept {
  if (name == nullptr || data == nullptr) return BadArgument(client);
  *name = *data = kNothing;
  client::RegistryEntry entry;
  return Run(
      client, [&](QorlixClient& to) { return to.Reg_EnumValue(key, index, entry); },
      [&](qorlix_client& handle) {
        *name = handle.texts.Keep(entry.name, entry.nameLength);
        *data = handle.texts.Keep(entry.data, entry.dataLength);
      });
}

qorlix_status QORLIX_CALL qorlix_reg_create_key_base(qorlix_client* client, std::uint32_t root,
                                                     const char* key) noexcept {
  return Run(client, [=](QorlixClient& to) { return to.Reg_CreateKeyBase(root, key); });
}

qorlix_status QORLIX_CALL qorlix_reg_del_key_base(qorlix_client* client, std::uint32_t root,
                                                  const char* key) noexcept {
  return Run(client, [=](QorlixClient& to) { return to.Reg_DelKeyBase(root, key); });
}

qorlix_status QORLIX_CALL qorlix_reg_set_value_base(qorlix_client* client, std::uint32_t root,
                                                    const char* key, const char* name,
                                                    const char* text) noexcept {
  return Run(client, [=](QorlixClient& to) { return to.Reg_SetValueBase(root, key, name, text); });
}

}  // extern "C"
