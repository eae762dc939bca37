#include "client/ResultCodes.h"

#include <algorithm>
#include <iterator>

#include "server/SrvResult.h"

namespace client {
namespace {

constexpr ResultCode kCodes[] = {
    {SRV_OK, "SRV_OK", "done"},
    {1, "ERROR_INVALID_FUNCTION", "the function is not supported"},
    {2, "ERROR_FILE_NOT_FOUND", "the key, value or file does not exist"},
    {3, "ERROR_PATH_NOT_FOUND", "the path does not exist"},
    {4, "ERROR_TOO_MANY_OPEN_FILES", "too many files are open"},
    {5, "ERROR_ACCESS_DENIED", "access is denied"},
    {6, "ERROR_INVALID_HANDLE", "the handle is not valid"},
    {8, "ERROR_NOT_ENOUGH_MEMORY", "there is not enough memory"},
    {11, "ERROR_BAD_FORMAT", "the file has no format that can be loaded"},
    {13, "ERROR_INVALID_DATA", "the data is not valid"},
    {14, "ERROR_OUTOFMEMORY", "there is not enough memory"},
    {15, "ERROR_INVALID_DRIVE", "the drive does not exist"},
    {19, "ERROR_WRITE_PROTECT", "the medium is write-protected"},
    {21, "ERROR_NOT_READY", "the device is not ready"},
    {31, "ERROR_GEN_FAILURE", "a device does not work"},
    {32, "ERROR_SHARING_VIOLATION", "somebody else is using the file"},
    {34, "ERANGE", "a text does not fit the buffer that it is copied to"},
    {38, "ERROR_HANDLE_EOF", "the end was reached"},
    {50, "ERROR_NOT_SUPPORTED", "the request is not supported"},
    {53, "ERROR_BAD_NETPATH", "the network path does not exist"},
    {87, "ERROR_INVALID_PARAMETER", "an argument is missing or not valid"},
    {109, "ERROR_BROKEN_PIPE", "the other end closed the pipe"},
    {110, "ERROR_OPEN_FAILED", "the file or device cannot be opened"},
    {112, "ERROR_DISK_FULL", "the disk is full"},
    {120, "ERROR_CALL_NOT_IMPLEMENTED", "the system does not have this function"},
    {121, "ERROR_SEM_TIMEOUT", "the time for waiting ran out"},
    {122, "ERROR_INSUFFICIENT_BUFFER", "a buffer is too small"},
    {123, "ERROR_INVALID_NAME", "the name has a wrong form"},
    {126, "ERROR_MOD_NOT_FOUND", "a library, or one that it needs, was not found"},
    {127, "ERROR_PROC_NOT_FOUND", "a library lacks the function"},
    {161, "ERROR_BAD_PATHNAME", "the path has a wrong form"},
    {170, "ERROR_BUSY", "what was asked for is in use"},
    {183, "ERROR_ALREADY_EXISTS", "it exists already"},
    {193, "ERROR_BAD_EXE_FORMAT", "the file is not a program or library for this system"},
    {206, "ERROR_FILENAME_EXCED_RANGE", "the file name is too long"},
    {230, "ERROR_BAD_PIPE", "the pipe is in a wrong state"},
    {231, "ERROR_PIPE_BUSY", "all connections of the pipe are in use"},
    {232, "ERROR_NO_DATA", "the pipe is being closed"},
    {233, "ERROR_PIPE_NOT_CONNECTED", "nobody is at the other end of the pipe"},
    {234, "ERROR_MORE_DATA", "there is more data than fits"},
    {258, "WAIT_TIMEOUT", "the time for waiting ran out"},
    {259, "ERROR_NO_MORE_ITEMS", "there is nothing more to list or to fetch"},
    {487, "ERROR_INVALID_ADDRESS", "the address is not valid"},
    {535, "ERROR_PIPE_CONNECTED", "a process is at the other end of the pipe already"},
    {536, "ERROR_PIPE_LISTENING", "the pipe is waiting for the other end"},
    {740, "ERROR_ELEVATION_REQUIRED", "the program needs administrator rights to start"},
    {995, "ERROR_OPERATION_ABORTED", "the operation was cancelled"},
    {996, "ERROR_IO_INCOMPLETE", "the operation is not complete yet"},
    {997, "ERROR_IO_PENDING", "the operation goes on in the background"},
    {998, "ERROR_NOACCESS", "the memory cannot be accessed"},
    {999, "ERROR_SWAPERROR",
     "of TestFunction: the text was shown, its one success; of others: an input or output error"},
    {1009, "ERROR_BADDB", "the registry is damaged"},
    {1010, "ERROR_BADKEY", "the registry key is not valid"},
    {1011, "ERROR_CANTOPEN", "the registry key cannot be opened"},
    {1012, "ERROR_CANTREAD", "the registry key cannot be read"},
    {1013, "ERROR_CANTWRITE", "the registry key cannot be written"},
    {1018, "ERROR_KEY_DELETED", "the registry key is marked for deletion"},
    {1020, "ERROR_KEY_HAS_CHILDREN", "the registry key has subkeys"},
    {1114, "ERROR_DLL_INIT_FAILED", "a library refused to be loaded"},
    {1157, "ERROR_DLL_NOT_FOUND", "a library that the program needs was not found"},
    {1168, "ERROR_NOT_FOUND", "the element was not found"},
    {1223, "ERROR_CANCELLED", "the user cancelled the operation"},
    {SRV_SHUTDOWN_IN_PROGRESS, "SRV_SHUTDOWN_IN_PROGRESS",
     "a stop request was taken; without the confirmation value 253 the server goes on serving"},
    {1307, "ERROR_INVALID_OWNER", "the owner is not one who may be it"},
    {1314, "ERROR_PRIVILEGE_NOT_HELD", "a privilege is missing"},
    {1359, "ERROR_INTERNAL_ERROR", "an internal error"},
    {1450, "ERROR_NO_SYSTEM_RESOURCES", "the system is out of resources"},
    {1460, "ERROR_TIMEOUT", "the time for the operation ran out"},
    {1603, "ERROR_INSTALL_FAILURE", "the installation failed"},
    {3010, "ERROR_SUCCESS_REBOOT_REQUIRED", "done; the machine has to be restarted"},
    {5010, "ERROR_OBJECT_ALREADY_EXISTS", "it exists already"},
    {SRV_ERR_ENTRY_POINT_MISSING, "SRV_ERR_ENTRY_POINT_MISSING",
     "a library that the server loaded lacks the function"},
    {BUFFER_OVERFLOW, "BUFFER_OVERFLOW",
     "the request ends before its last field, a text is too long, or the answer does not fit"},
    {SRV_ERR_DLL_NOT_FOUND, "SRV_ERR_DLL_NOT_FOUND", "the server could not load a library"},
    {SRV_ERR_EXCEPTION_OCCURED, "SRV_ERR_EXCEPTION_OCCURED",
     "a library or registry call failed with an exception"},
    {SRV_ERR_NO_KEY_HANDLE, "SRV_ERR_NO_KEY_HANDLE",
     "a registry key was opened, but no handle came back"},
    {SRV_ERR_UNKNOWN_COMMAND, "SRV_ERR_UNKNOWN_COMMAND", "the server does not know the command"},
    {10006, "", "a silent restart after which no ring check runs"},
};

constexpr bool IsAscending() {
  for (std::size_t i = 1; i < std::size(kCodes); ++i) {
    if (kCodes[i - 1].code >= kCodes[i].code) return false;
  }
  return true;
}
static_assert(IsAscending(), "the look-up is a binary search");

const ResultCode* Find(std::uint32_t code) {
  const auto* const found = std::lower_bound(
      std::begin(kCodes), std::end(kCodes), code,
      [](const ResultCode& entry, std::uint32_t wanted) { return entry.code < wanted; });
  return found != std::end(kCodes) && found->code == code ? found : nullptr;
}

}  // namespace

std::span<const ResultCode> KnownResultCodes() noexcept { return kCodes; }

const char* ResultName(std::uint32_t code) noexcept {
  const ResultCode* const entry = Find(code);
  return entry != nullptr ? entry->name : "";
}

const char* ResultText(std::uint32_t code) noexcept {
  const ResultCode* const entry = Find(code);
  return entry != nullptr ? entry->text
                          : "a code of the platform, or of the library that the command called";
}

const char* ServerExitText(std::uint32_t exitCode) noexcept {
  switch (exitCode) {
    case 0:
      return "it did not end by itself; under Wine, a process that was killed or broke down exits "
             "so";
    case 1:
      return "it ended as after a stop, or its pipe could not be created";
    case 183:
      return "another server is running already";
    // A program that cannot even be loaded exits with the loader's status.
    case 0xC0000135:
      return "a library that it needs was not found; is boardsvc32.dll beside it?";
    case 0xC0000139:
      return "a library that it needs lacks a function; is boardsvc32.dll the right one?";
    case 0xC0000142:
      return "a library that it needs refused to be loaded";
    case 0xC000007B:
      return "a library that it needs is not a 32-bit one";
    case 0xC0000005:
      return "it crashed with an access violation";
    default:
      return ResultText(exitCode);
  }
}

}  // namespace client
