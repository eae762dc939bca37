#ifndef PLATFORM_WINHANDLES_H_
#define PLATFORM_WINHANDLES_H_

/// Owners of what Windows hands out, for the files that call it. Values that calls return for
/// "none" differ; an owner takes the one that is named here.

#include "platform/UniqueHandle.h"
#include "platform/WinTypes.h"

struct KernelHandleTraits {
  using Type = HANDLE;
  static Type None() { return nullptr; }
  static void Close(Type handle);
};
/// An event, mutex, process, section, token: null is none.
using UniqueKernelHandle = UniqueHandle<KernelHandleTraits>;

struct FileHandleTraits {
  using Type = HANDLE;
  static Type None();
  static void Close(Type handle);
};
/// What CreateFile opens: INVALID_HANDLE_VALUE is none.
using UniqueFileHandle = UniqueHandle<FileHandleTraits>;

struct RegKeyTraits {
  using Type = HKEY;
  static Type None() { return nullptr; }
  static void Close(Type key);
};
/// A registry key: null is none.
using UniqueRegKey = UniqueHandle<RegKeyTraits>;

#endif  // PLATFORM_WINHANDLES_H_
