#include "tests/faults/RimTable.h"

#include "tests/fakes/FaultPlan.h"

namespace rim_table {
namespace {

using fault_plan::kAtOnce;
using fault_plan::kEmpty;
using fault_plan::kNothing;
using fault_plan::kShort;

constexpr char kPipeIo[] = "server/PipeIo.h";
constexpr char kRegistry[] = "registry/RegistryOperation.h";
constexpr char kBoard[] = "board/boardsvc32.h";
constexpr char kLibrary[] = "platform/DynamicLibrary.h";
constexpr char kPath[] = "platform/SystemPath.h";
constexpr char kNamed[] = "platform/NamedObject.h";
constexpr char kGuard[] = "platform/GuardedCall.h";
constexpr char kClock[] = "platform/WallClock.h";
constexpr char kHandles[] = "platform/WinHandles.h";
constexpr char kProduct[] = "registry/ProductInformation.h";
constexpr char kOs[] = "registry/OsName.h";
constexpr char kHost[] = "trace/TraceHost.h";
constexpr char kOutputs[] = "trace/TraceOutputs.h";
constexpr char kShared[] = "trace/TraceShared.h";

constexpr char kMemoryOnly[] = "looks at memory";
constexpr char kNoReport[] = "reports nothing, and can only do nothing";
constexpr char kPortable[] = "portable code behind the same header";

constexpr Failure kRaises = {"raises", 0, true};
constexpr Failure kDoesNothing = {"does nothing", kNothing};

// What a registry primitive can answer, and a fault of the platform below it.
std::vector<Failure> Registry() { return {{"denied", 5}, {"deleted meanwhile", 1018}, kRaises}; }
std::vector<Failure> Board() { return {{"fails", 31}, kRaises}; }
std::vector<Failure> Raises() { return {{"fails", 31}, kRaises}; }
std::vector<Failure> MutexWait() {
  return {{"timeout", 258}, {"abandoned", 0x80}, {"fails", 0xFFFFFFFF}};
}

const std::vector<Function> kFunctions = {
    {kPipeIo, "pipe_io::CreateInstanceEvent", {{"no memory", 8}}},
    {kPipeIo, "pipe_io::CreateInstance", {{"denied", 5}, {"busy", 231}}},
    {kPipeIo,
     "pipe_io::Connect",
     {{"came and went", 232},
      {"client is there", 535},
      {"no memory", 8},
      {"succeeds at once", kAtOnce}}},
    {kPipeIo, "pipe_io::Disconnect", {{"not connected", 233}}},
    {kPipeIo, "pipe_io::Read", {{"broken", 109}, {"reads nothing at once", kEmpty}}},
    {kPipeIo, "pipe_io::Write", {{"no reader", 232}, {"short", kShort}}},
    {kPipeIo,
     "pipe_io::Completion",
     {{"broken", 109}, {"incomplete", 996, false, /*passes=*/true}}},
    {kPipeIo, "pipe_io::IsComplete", {}, kMemoryOnly},
    {kPipeIo, "pipe_io::HasTransferred", {}, kMemoryOnly},
    {kPipeIo, "pipe_io::Abandon", {}, "waits until the operation is through"},
    {kPipeIo, "pipe_io::Signal", {kDoesNothing}},
    {kPipeIo, "pipe_io::Unsignal", {}, "asked for only where something else has failed"},
    {kPipeIo, "pipe_io::WaitAny", {{"fails", 6}}},
    {kPipeIo, "pipe_io::FlushAll", {kDoesNothing}},
    {kPipeIo, "pipe_io::Close", {}, "of a handle that is open"},
    {kPipeIo, "pipe_io::Now", {}, kMemoryOnly},
    {kPipeIo, "pipe_io::ClientProcess", {{"does not tell", kNothing}}},
    {kPipeIo, "pipe_io::GiveWay", {}, kNoReport},
    {kPipeIo, "pipe_io::ErrorQueryAddress", {}, "an address"},

    {"server/ClientIdentity.h",
     "client_identity::IsAdministrator",
     {},
     "asked for only under the strict profile; whatever fails makes it false"},

    {kRegistry, "RegCreateKeyBL", Registry()},
    {kRegistry, "RegDelKeyBL", Registry()},
    {kRegistry, "RegSetValueBL", Registry()},
    {kRegistry, "RegGetValueBL", Registry()},
    {kRegistry, "RegDelValueBL", Registry()},
    {kRegistry, "RegEnumKeyBL", Registry()},
    {kRegistry, "RegEnumValueBL", Registry()},
    {kRegistry, "RegKeyExists", {{"unreadable", 5}, kRaises}},
    {kRegistry, "RegDeleteLiteralKey", {{"denied", 5}, kRaises}},
    {kRegistry, "RegQueryValueLeavingKeyOpen", {{"denied", 5}, {"no handle", 8606}}},
    {kRegistry, "CanonicalisePath", {{"not taken", 1}, kRaises}},

    {kBoard, "StartHardwareDetection", Board()},
    {kBoard, "BRDX_ScanBL", Board()},
    {kBoard, "BRDX_CreateAllLogdevicesBL", Board()},
    {kBoard, "BRDX_HasUninitializedInstancesBL", Board()},
    {kBoard, "BRDX_RemoveAbandonLogDevices", Board()},
    {kBoard, "BRDX_UpdateRoute", Board()},
    {kBoard, "BRDX_UpdateLogdevicesForDeviceBL", Board()},
    {kBoard, "BRDX_EnumBoardExBL", Board()},
    {kBoard, "BRDX_EnumInstBoardBL", Board()},
    {kBoard, "BRDX_EnumAvailableBoardsBL", Board()},
    {kBoard, "BRDX_EnumAdaptersBL", Board()},
    {kBoard, "BRDX_EnumConfigurationBL", Board()},
    {kBoard, "BRDX_BoardGetMapBL", Board()},
    {kBoard, "BRDX_GetBoardInfoBL", Board()},
    {kBoard, "BRDX_GetBoardInfoExBL", Board()},
    {kBoard, "BRDX_RegisterForDeviceChangeNotifications", Board()},
    {kBoard, "BRDX_UnregisterForDeviceChangeNotifications", Board()},
    {kBoard, "BRDX_GetDeviceChange", Board()},
    {kBoard, "BRDX_GetBoardInformation", Board()},
    {kBoard, "BRDX_GetDeviceInstance", Board()},
    {kBoard, "BRDX_GetDeviceInstanceOpt", Board()},

    {"", "export Installer", {{"fails", 31}}},
    {"", "export Deinstaller", {{"fails", 31}}},
    {"", "export EINST_InstallWdmDriver", Raises()},
    {"", "export RunEpromPanelAsAdmin", {{"reports no success", kNothing}, kRaises}},
    {"", "export IE_AddIPAddressEx", Raises()},
    {"", "export IE_DeleteIPAddressEx", Raises()},
    {"", "export CM_Get_DevNode_Status", Raises()},
    {"", "export DllEntryFktSilent", Raises()},
    {"", "export EpIsCpInRing", Raises()},

    {kLibrary, "platform::DynamicLibrary::Load", {{"not found", 126}, kRaises}},
    {kLibrary, "platform::DynamicLibrary::Find", {{"not found", 127}}},
    {kLibrary, "platform::DynamicLibrary::Free", {}, "of a library that is loaded"},
    {kLibrary, "platform::DynamicLibrary::Release", {}, kMemoryOnly},
    {kLibrary, "platform::LastError", {}, kMemoryOnly},
    {kLibrary, "platform::SetLastError", {}, kMemoryOnly},
    {kPath, "platform::SystemDirectory", {{"fails", kNothing}, {"too long", 261}}},
    {kPath, "platform::SpecialFolder", {{"fails", 1}}},
    {kPath, "platform::AppendToPath", {}, kPortable},
    {kPath, "platform::FullPath", {}, "asked for only under the strict profile"},
    {kPath, "platform::LiesBelow", {}, kPortable},
    {"platform/FencedBuffer.h", "platform::FencedBuffer", {{"no memory", 8}}},
    {"platform/EventLog.h", "ReportErrorEvent", {kDoesNothing}},
    {"platform/MessageBox.h", "platform::ShowMessageBox", {kDoesNothing}},
    {"platform/WorkerThread.h", "platform::StartWorker", {{"no thread", 8}}},
    {"platform/WorkerThread.h", "platform::Run", {}, "an operation of whoever starts a worker"},
    {kGuard, "platform::InvokeGuarded", {}, "what raises inside is planned where it raises"},
    {kGuard, "platform::ReserveStackForGuards", {}, kNoReport},
    {kClock, "platform::WallClock", {}, kMemoryOnly},
    {kClock, "platform::SleepMilliseconds", {}, kNoReport},
    {kHandles, "KernelHandleTraits::Close", {}, "of a handle that is open"},
    {kHandles, "FileHandleTraits::Close", {}, "of a handle that is open"},
    {kHandles, "FileHandleTraits::None", {}, kMemoryOnly},
    {kHandles, "RegKeyTraits::Close", {}, "of a key that is open"},
    {kNamed, "platform::CreateNamedMutex", {{"denied", 5}}},
    {kNamed, "platform::WaitForMutex", MutexWait()},
    {kNamed, "platform::ReleaseNamedMutex", {}, kNoReport},
    {kNamed, "platform::SetEventIfItExists", {{"not there", 2}}},
    {kNamed, "platform::CreateMarkerMutex", {{"denied", 5}}},
    {kNamed, "platform::CloseNamedObject", {}, "of a handle that is open"},
    {kNamed, "platform::SignalEvent", {{"not there", 2}}},

    {kOs, "QueryOsVersion", {}, "the platform always knows"},
    {kOs, "FormatOsText", {}, kPortable},
    {kOs, "GetOsName", {}, kPortable},
    {kProduct, "ReadProductValues", {{"no key", 2}}},
    {kProduct, "GatherProductInformation", {}, kPortable},
    {kProduct, "LookUpStack64", {}, kPortable},
    {kProduct, "LookUpStack32", {}, kPortable},
    {kProduct, "LookUpStack32Through32BitView", {}, kPortable},
    {kProduct, "LookUpStationMark", {}, kPortable},
    {kProduct, "LookUpCloudBridge", {}, kPortable},

    {kHost, "zqotrc::ParameterKey::ParameterKey", {{"no key", 2}}},
    {kHost, "zqotrc::ParameterKey::~ParameterKey", {}, "of a key that is open"},
    {kHost, "zqotrc::ParameterKey::Read", {{"no value", 2}}},
    {kHost, "zqotrc::TakeMoment", {}, "clocks and numbers that are always there"},
    {kHost, "zqotrc::CounterFrequency", {{"no counter", 1}}},
    {kHost, "zqotrc::SecondsNow", {}, "a clock that is always there"},
    {kHost, "zqotrc::LastErrorCode", {}, kMemoryOnly},
    {kHost, "zqotrc::SetLastErrorCode", {}, kMemoryOnly},

    {kOutputs, "zqotrc::AppendFile::Open", {{"denied", 5}}},
    {kOutputs, "zqotrc::AppendFile::Size", {{"unknown", 1}}},
    {kOutputs, "zqotrc::AppendFile::Append", {kDoesNothing}},
    {kOutputs, "zqotrc::AppendFile::Close", {}, "of a file that is open"},
    {kOutputs, "zqotrc::RemoveFile", {kDoesNothing}},
    {kOutputs, "zqotrc::ModificationTime", {{"unknown", 1}}},
    {kOutputs, "zqotrc::SendToDebugger", {kDoesNothing}},
    {kOutputs, "zqotrc::OpenDriver", {{"not there", 2}, {"no calls", 50}}},
    {kOutputs, "zqotrc::SendToDriver", {kDoesNothing}},
    {kOutputs, "zqotrc::CloseDriver", {}, "of a driver that is open"},
    {kOutputs, "zqotrc::CommonProgramFiles", {{"unknown", 1}}, "", 1},
    {kOutputs, "zqotrc::LoadEngine", {{"not found", 1}}, "", 1},
    {kOutputs, "zqotrc::HasEngineExport", {{"missing", 1}}, "", 4},
    // With all bits set it stands for a call that raised.
    {kOutputs, "zqotrc::EngineOpen", {{"fails", 5}, {"raised", 0xFFFFFFFF}}},
    {kOutputs, "zqotrc::EngineWrite", {{"fails", 5}, {"raised", 0xFFFFFFFF}}},
    {kOutputs, "zqotrc::EngineCommand", {{"fails", 5}, {"raised", 0xFFFFFFFF}}},
    {kOutputs, "zqotrc::EngineClose", {{"fails", 5}, {"raised", 0xFFFFFFFF}}},
    {kOutputs, "zqotrc::ReportTraceEvent", {}, kNoReport},
    {kOutputs, "zqotrc::NameOfEngineExport", {}, kPortable},

    {kShared, "zqotrc::EnterProcessLock", {}, kNoReport},
    {kShared, "zqotrc::LeaveProcessLock", {}, kNoReport},
    {kShared, "zqotrc::CreateTraceMutex", {{"denied", 5}}},
    {kShared, "zqotrc::HasTraceMutex", {}, kMemoryOnly},
    {kShared, "zqotrc::WaitForTraceMutex", MutexWait()},
    {kShared, "zqotrc::ReleaseTraceMutex", {}, kNoReport},
    {kShared, "zqotrc::CloseTraceMutex", {}, "of a handle that is open"},
    {kShared, "zqotrc::OpenGeneration", {{"denied", 5}}},
    {kShared, "zqotrc::CloseGeneration", {}, kMemoryOnly},
    {kShared, "zqotrc::OpenSection", {{"denied", 5}}},
    {kShared, "zqotrc::CloseSection", {}, "of a section that is open"},
    {kShared, "zqotrc::MapSection", {{"no room", 8}}},
    {kShared, "zqotrc::UnmapSection", {}, "of a view that is there"},
};

const std::vector<PlatformFile> kPlatformFiles = {
    {"server/PipeIo.cpp", kPipeIo},
    {"server/SrvSecurity.cpp", "server/SrvSecurity.h"},
    {"server/ClientIdentity.cpp", "server/ClientIdentity.h"},
    {"server/Diagnostics.cpp", "server/Diagnostics.h"},
    {"server/RequestWatch.cpp", "server/RequestWatch.h"},
    {"platform/AdminFolder.cpp", "platform/AdminFolder.h"},
    {"platform/CrashEvidence.cpp", "platform/CrashEvidence.h"},
    {"platform/MachineSetting.cpp", "platform/MachineSetting.h"},
    {"platform/Minidump.cpp", "platform/Minidump.h"},
    {"registry/RegistryOperation.cpp", kRegistry},
    {"registry/OsVersionQuery.cpp", kOs},
    {"registry/ProductRegistry.cpp", kProduct},
    {"platform/DynamicLibrary.cpp", kLibrary},
    {"platform/EventLog.cpp", "platform/EventLog.h"},
    {"platform/FencedBuffer.cpp", "platform/FencedBuffer.h"},
    {"platform/GuardedCall.cpp", kGuard},
    {"platform/MessageBox.cpp", "platform/MessageBox.h"},
    {"platform/NamedObject.cpp", kNamed},
    {"platform/SystemFolders.cpp", kPath},
    {"platform/WorkerThread.cpp", "platform/WorkerThread.h"},
    {"platform/WallClock.cpp", kClock},
    {"platform/WinHandles.cpp", kHandles},
    {"trace/TraceHost.cpp", kHost},
    {"trace/TraceOutputs.cpp", kOutputs},
    {"trace/TraceEngineLibrary.cpp", kOutputs},
    {"trace/TraceShared.cpp", kShared},
};

}  // namespace

const std::vector<Function>& Functions() { return kFunctions; }
const std::vector<PlatformFile>& PlatformFiles() { return kPlatformFiles; }

const std::vector<std::string>& NotNative() {
  // The entry alone calls them, before there is a server, and threads of their own; decisions are
  // in SecurityPlan, HangDetector, EvidenceSlot and CrashReport.
  static const std::vector<std::string> headers = {
      "server/SrvSecurity.h",   "server/Diagnostics.h",     "server/RequestWatch.h",
      "platform/AdminFolder.h", "platform/CrashEvidence.h", "platform/MachineSetting.h",
      "platform/Minidump.h"};
  return headers;
}

}  // namespace rim_table
