#include "platform/WinHandles.h"

#include <windows.h>

void KernelHandleTraits::Close(Type handle) { (void)CloseHandle(handle); }

HANDLE FileHandleTraits::None() { return INVALID_HANDLE_VALUE; }
void FileHandleTraits::Close(Type handle) { (void)CloseHandle(handle); }

void RegKeyTraits::Close(Type key) { (void)RegCloseKey(key); }
