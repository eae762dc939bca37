#ifndef DOCTOR_IMAGEKIND_H_
#define DOCTOR_IMAGEKIND_H_

#include <cstdint>
#include <span>

namespace doctor {

/// What a file is to a 32-bit process that wants to load it.
enum class ImageKind : std::uint8_t {
  Missing,
  Unreadable,  ///< it is there, but may not be read
  NoImage,     ///< no program or library of Windows
  Other,       ///< one for another processor, 64-bit ones included
  Fitting,     ///< a 32-bit one for x86
};

/// How many bytes from the beginning of a file are enough to tell, as a rule.
inline constexpr std::uint32_t kImageHead = 4096;

/// Tells it by the beginning of the file. \returns one of NoImage, Other and Fitting.
ImageKind KindOf(std::span<const std::uint8_t> head);

}  // namespace doctor

#endif  // DOCTOR_IMAGEKIND_H_
