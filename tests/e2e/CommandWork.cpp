#include "tests/e2e/CommandWork.h"

#include <windows.h>

#include <map>
#include <stdexcept>
#include <string>

#include "bench/RegistryWork.h"
#include "board/boardsvc32.h"

namespace e2e {
namespace {

constexpr std::uint32_t kRoom = 8192;

// Arguments are in-out for the library, though it leaves those alone that go in.
char g_device[] = "HWX7101";
char g_board[] = "NB410A";
char g_map[] = "1";
char g_adapter[] = "Line 2";
char g_hardware[] = "PCI\\VEN_1F3C&DEV_5101";
char g_instance[] = "PCI\\3";
constexpr BRDX_GUID kClass = {
    0xCAC88484, 0x7515, 0x4C03, {0x82, 0xE6, 0x71, 0xA8, 0x7A, 0xBA, 0xC3, 0x61}};

struct Out {
  char bytes[kRoom + 1];
  std::uint32_t length;
};
Out g_outs[6];
std::uint32_t g_value;
std::uint8_t g_byte;
BRDX_GUID g_guid;

char* Buffer(unsigned i) { return g_outs[i].bytes; }
std::uint32_t* Length(unsigned i) { return &g_outs[i].length; }

std::uint32_t AskForBoardInformation() {
  std::uint8_t key[] = {'k', 'e', 'y'};
  std::uint8_t data[] = {0xAB, 0xCD};
  std::uint8_t area1[4] = {};
  std::uint8_t area2[2] = {};
  std::uint32_t value = 0;
  BRDX_INFO_INPUT input = {7, 8, 9, data, sizeof(data), area1, sizeof(area1), &value};
  BRDX_INFO_OUTPUT output = {area2, sizeof(area2), 0, 0};
  return BRDX_GetBoardInformation(key, &input, &output, 10);
}

std::uint32_t AskForDeviceState(bool withOption) {
  std::uint32_t instance = 0;
  const std::uint32_t result = withOption ? BRDX_GetDeviceInstanceBL(g_instance, 7, &instance)
                                          : BRDX_GetDeviceInstanceBL(g_instance, &instance);
  char path[MAX_PATH];
  (void)GetSystemDirectoryA(path, sizeof(path));
  (void)lstrcatA(path, "\\cfgmgr32.dll");
  using Query = DWORD(WINAPI*)(std::uint32_t*, std::uint32_t*, DWORD, DWORD);
  const HMODULE library = LoadLibraryA(path);
  const auto query = reinterpret_cast<Query>(
      reinterpret_cast<void*>(GetProcAddress(library, "CM_Get_DevNode_Status")));
  std::uint32_t status = 0;
  std::uint32_t problem = 0;
  (void)query(&status, &problem, instance, 0);
  (void)FreeLibrary(library);
  return result;
}

using Work = std::uint32_t (*)();
const std::map<std::string_view, Work> kBoardWork = {
    {"EnumBoard",
     [] {
       return BRDX_EnumBoardExBL(g_device, 0, Buffer(0), Length(0), Buffer(1), Length(1), Buffer(2),
                                 Length(2), 0);
     }},
    {"EnumInstBoard",
     [] {
       return BRDX_EnumInstBoardBL(0, Buffer(0), Length(0), Buffer(1), Length(1), Buffer(2),
                                   Length(2), Buffer(3), Length(3), Buffer(4), Length(4), Buffer(5),
                                   Length(5), &g_value);
     }},
    {"EnumAvailableBoard",
     [] {
       return BRDX_EnumAvailableBoardsBL(0, Buffer(0), Length(0), Buffer(1), Length(1), &g_value);
     }},
    {"EnumAdapters",
     [] { return BRDX_EnumAdaptersBL(0, Buffer(0), Length(0), Buffer(1), Length(1), &g_byte); }},
    {"EnumConfiguration",
     [] {
       return BRDX_EnumConfigurationBL(0, g_board, g_map, g_device, g_instance, Buffer(0),
                                       Length(0), Buffer(1), Length(1), Buffer(2), Length(2),
                                       Buffer(3), Length(3));
     }},
    {"BoardGetMap",
     [] { return BRDX_BoardGetMapBL(g_device, g_adapter, g_hardware, Buffer(0), Length(0)); }},
    {"GetBoardInfo",
     [] {
       return BRDX_GetBoardInfoBL(1, g_board, g_map, g_device, g_instance, Buffer(0), Length(0));
     }},
    {"GetBoardInfoEx",
     [] {
       return BRDX_GetBoardInfoExBL(2, g_board, g_map, g_instance,
                                    reinterpret_cast<std::uint8_t*>(Buffer(0)), Length(0));
     }},
    {"Scan", [] { return BRDX_ScanBL(); }},
    {"CreateAllLogdevices", [] { return BRDX_CreateAllLogdevicesBL(); }},
    {"HasUninitializedInstances", [] { return BRDX_HasUninitializedInstancesBL() - 7; }},
    {"UpdateLogDevicesForDevice",
     [] { return BRDX_UpdateLogdevicesForDeviceBL(g_device, g_hardware); }},
    {"Register", [] { return BRDX_RegisterForDeviceChangeNotifications(kClass, g_device); }},
    {"GetDeviceChange",
     [] { return BRDX_GetDeviceChange(g_device, &g_byte, &g_guid, Buffer(0), Length(0)); }},
    {"Unregister", [] { return BRDX_UnregisterForDeviceChangeNotifications(kClass, g_device); }},
    {"DeviceStateEx", [] { return AskForDeviceState(/*withOption=*/true); }},
    {"DeviceStateExWithoutOption", [] { return AskForDeviceState(/*withOption=*/false); }},
    {"BoardInformation", AskForBoardInformation},
};

const std::map<std::string_view, CommandCode> kRegistryWork = {
    {"Reg_GetValue", CommandCode::Reg_GetValue},   {"Reg_EnumKey", CommandCode::Reg_EnumKey},
    {"Reg_EnumValue", CommandCode::Reg_EnumValue}, {"Reg_SetValue", CommandCode::Reg_SetValue},
    {"Reg_DelValue", CommandCode::Reg_DelValue},   {"Reg_CreateKey", CommandCode::Reg_CreateKey},
    {"Reg_DelKey", CommandCode::Reg_DelKey},
};

}  // namespace

void DoWorkOf(std::string_view command) {
  if (command == "NoOperation") return;
  static bench::RegistryAnswer answer;
  const auto registry = kRegistryWork.find(command);
  if (registry != kRegistryWork.end()) {
    bench::FindRegistryWork(registry->second)(answer);
    return;
  }
  for (Out& out : g_outs) out.length = kRoom;
  const std::uint32_t result = kBoardWork.at(command)();
  if (result != 0)
    throw std::runtime_error(std::string(command) + " answers " + std::to_string(result));
}

}  // namespace e2e
