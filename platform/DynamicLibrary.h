#ifndef PLATFORM_DYNAMICLIBRARY_H_
#define PLATFORM_DYNAMICLIBRARY_H_

#include <cstdint>

/// Calling conventions of entry points, for their types.
#ifdef _WIN32
#define ENTRY_STDCALL __attribute__((stdcall))
#define ENTRY_CDECL __attribute__((cdecl))
#else
#define ENTRY_STDCALL
#define ENTRY_CDECL
#endif

namespace platform {

/// Any exported function; cast to its own type before it is called.
using EntryPoint = void (*)();

/// A library loaded at run time; unloaded by the destructor.
///
/// Load and Find leave the platform's error code in the thread's last error, as the platform's own
/// calls do.
class DynamicLibrary {
 public:
  DynamicLibrary() = default;
  ~DynamicLibrary() { Free(); }
  DynamicLibrary(const DynamicLibrary&) = delete;
  DynamicLibrary& operator=(const DynamicLibrary&) = delete;

  /// \param name a full path, or a bare name, which the platform's search order finds
  /// \returns false when it cannot be loaded
  bool Load(const char* name);
  /// \returns null when the library has no such export
  EntryPoint Find(const char* name) const;
  /// Unloads it; does nothing when nothing is loaded.
  void Free();
  /// Lets go without unloading. \returns the handle, 0 when nothing is loaded.
  void* Release();

  bool IsLoaded() const { return handle_ != nullptr; }
  void* Handle() const { return handle_; }

 private:
  void* handle_ = nullptr;
};

/// The thread's last error.
std::uint32_t LastError();
void SetLastError(std::uint32_t error);

}  // namespace platform

#endif  // PLATFORM_DYNAMICLIBRARY_H_
