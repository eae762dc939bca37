#include "doctor/ImageKind.h"

#include <cstddef>

namespace doctor {
namespace {

// Little-endian, and only if all of it is there.
template <typename T>
bool Load(std::span<const std::uint8_t> bytes, std::size_t at, T& number) {
  if (at > bytes.size() || sizeof(T) > bytes.size() - at) return false;
  number = 0;
  for (std::size_t i = sizeof(T); i-- > 0;) {
    number = static_cast<T>(number << 8 | bytes[at + i]);
  }
  return true;
}

}  // namespace

ImageKind KindOf(std::span<const std::uint8_t> head) {
  constexpr std::uint16_t kDosMagic = 0x5A4D;  // MZ
  constexpr std::size_t kOffsetOfHeader = 0x3C;
  constexpr std::uint32_t kSignature = 0x00004550;  // PE, 0, 0
  constexpr std::size_t kSignatureSize = 4;
  constexpr std::size_t kFileHeaderSize = 20;
  constexpr std::uint16_t kX86 = 0x014C;
  constexpr std::uint16_t kMagic32 = 0x010B;

  std::uint16_t dosMagic = 0;
  std::uint32_t header = 0;
  std::uint32_t signature = 0;
  std::uint16_t machine = 0;
  std::uint16_t magic = 0;
  if (!Load(head, 0, dosMagic) || dosMagic != kDosMagic) return ImageKind::NoImage;
  if (!Load(head, kOffsetOfHeader, header)) return ImageKind::NoImage;
  if (!Load(head, header, signature) || signature != kSignature) return ImageKind::NoImage;
  const std::size_t fileHeader = std::size_t{header} + kSignatureSize;
  if (!Load(head, fileHeader, machine)) return ImageKind::NoImage;
  if (!Load(head, fileHeader + kFileHeaderSize, magic)) return ImageKind::NoImage;
  return machine == kX86 && magic == kMagic32 ? ImageKind::Fitting : ImageKind::Other;
}

}  // namespace doctor
