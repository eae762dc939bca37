#ifndef PLATFORM_FENCEDBUFFER_H_
#define PLATFORM_FENCEDBUFFER_H_

namespace platform {

/// One buffer of the process, of 65536 bytes, around which nothing can be written: for a library
/// that is told a larger capacity than anybody has. Behind it lies a fence for those who write up
/// to that capacity, in front of it one for those who write at its end: an address 2^32 - 1 further
/// on is the one before. Loop thread only; the content is the caller's to clear. \returns null when
/// there is no memory for it.
char* FencedBuffer();

}  // namespace platform

#endif  // PLATFORM_FENCEDBUFFER_H_
