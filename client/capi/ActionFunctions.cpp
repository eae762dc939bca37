#include "client/ActionCalls.h"
#include "client/capi/Handle.h"

namespace {

using client::ActionCalls;
using client::QorlixClient;
using client::capi::BadArgument;
using client::capi::Run;

// The commands whose second reply says that the library was there.
template <typename Call>
qorlix_status RunTwice(qorlix_client* client, std::uint32_t* libraryRan, Call call) {
  if (libraryRan != nullptr) *libraryRan = 0;
  client::SecondSend second;
  return Run(
      client, [&](QorlixClient& to) { return call(ActionCalls(to), second); },
      [&](qorlix_client&) {
        if (libraryRan != nullptr) *libraryRan = second.came ? 1 : 0;
      });
}

}  // namespace

extern "C" {

qorlix_status QORLIX_CALL qorlix_install(qorlix_client* client, const char* device_id,
                                         const char* language_extension) noexcept {
  return Run(client, [=](QorlixClient& to) {
    return ActionCalls(to).Install(device_id, language_extension);
  });
}

qorlix_status QORLIX_CALL qorlix_deinstall(qorlix_client* client, const char* device_id,
                                           const char* language_extension,
                                           const char* board) noexcept {
  return Run(client, [=](QorlixClient& to) {
    return ActionCalls(to).Deinstall(device_id, language_extension, board);
  });
}

qorlix_status QORLIX_CALL qorlix_install_wdm_driver(qorlix_client* client, const char* service,
                                                    const char* inf_file, const char* third,
                                                    std::uint32_t mode,
                                                    std::uint32_t* library_ran) noexcept {
  return RunTwice(client, library_ran, [=](ActionCalls calls, client::SecondSend& second) {
    return calls.InstallWdmDriver_32(service, inf_file, third, mode, second);
  });
}

qorlix_status QORLIX_CALL qorlix_run_online_panel(qorlix_client* client,
                                                  std::uint32_t* library_ran) noexcept {
  return RunTwice(client, library_ran, [](ActionCalls calls, client::SecondSend& second) {
    return calls.RunOnlinePanel_32(second);
  });
}

qorlix_status QORLIX_CALL qorlix_silent_restart(qorlix_client* client, const char* log_device,
                                                const char* event_name) noexcept {
  return Run(client, [=](QorlixClient& to) {
    return ActionCalls(to).SilentRestart(log_device, event_name);
  });
}

qorlix_status QORLIX_CALL qorlix_get_silent_restart_result(qorlix_client* client,
                                                           const char* event_name) noexcept {
  return Run(client,
             [=](QorlixClient& to) { return ActionCalls(to).GetSilentRestartResult(event_name); });
}

std::uint32_t QORLIX_CALL qorlix_ip_address(std::uint8_t a, std::uint8_t b, std::uint8_t c,
                                            std::uint8_t d) noexcept {
  return client::IpAddress(a, b, c, d);
}

qorlix_status QORLIX_CALL qorlix_add_ip_address(qorlix_client* client, std::uint32_t address,
                                                std::uint32_t mask, std::uint32_t interface_index,
                                                std::uint32_t* nte_context,
                                                std::uint32_t* nte_instance) noexcept {
  if (nte_context == nullptr || nte_instance == nullptr) return BadArgument(client);
  *nte_context = *nte_instance = 0;
  client::AddedAddress added;
  return Run(
      client,
      [&](QorlixClient& to) {
        return ActionCalls(to).AddIpAddress(address, mask, interface_index, added);
      },
      [&](qorlix_client&) {
        *nte_context = added.nteContext;
        *nte_instance = added.nteInstance;
      });
}

qorlix_status QORLIX_CALL qorlix_del_ip_address(qorlix_client* client,
                                                std::uint32_t nte_context) noexcept {
  return Run(client, [=](QorlixClient& to) { return ActionCalls(to).DelIpAddress(nte_context); });
}

}  // extern "C"
