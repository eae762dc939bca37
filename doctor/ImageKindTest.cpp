#include "doctor/ImageKind.h"

#include <gtest/gtest.h>

#include <vector>

namespace doctor {
namespace {

// The beginning of an image as short as it can be: the DOS header, and behind it the others up to
// the magic of the optional one.
std::vector<std::uint8_t> Image(std::uint16_t machine, std::uint16_t magic) {
  std::vector<std::uint8_t> image(0x40 + 26, 0);
  image[0] = 'M';
  image[1] = 'Z';
  image[0x3C] = 0x40;
  image[0x40] = 'P';
  image[0x41] = 'E';
  image[0x44] = static_cast<std::uint8_t>(machine);
  image[0x45] = static_cast<std::uint8_t>(machine >> 8);
  image[0x58] = static_cast<std::uint8_t>(magic);
  image[0x59] = static_cast<std::uint8_t>(magic >> 8);
  return image;
}

TEST(ImageKindTest, TheMachineTells32BitImagesFromOthers) {
  EXPECT_EQ(KindOf(Image(0x014C, 0x010B)), ImageKind::Fitting);
  EXPECT_EQ(KindOf(Image(0x8664, 0x020B)), ImageKind::Other);
  EXPECT_EQ(KindOf(Image(0xAA64, 0x020B)), ImageKind::Other);
  EXPECT_EQ(KindOf(Image(0x014C, 0x020B)), ImageKind::Other);
}

TEST(ImageKindTest, ABeginningThatIsCutShortIsNoImage) {
  const std::vector<std::uint8_t> image = Image(0x014C, 0x010B);
  for (std::size_t size = 0; size < image.size(); ++size) {
    const std::vector<std::uint8_t> cut(image.begin(),
                                        image.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(KindOf(cut), ImageKind::NoImage) << size;
  }
}

TEST(ImageKindTest, AHeaderFarAwayIsNoImage) {
  std::vector<std::uint8_t> image = Image(0x014C, 0x010B);
  for (const int last : {0xFF, 0x7F}) {
    for (int i = 0; i < 4; ++i) image[static_cast<std::size_t>(0x3C + i)] = 0xFF;
    image[0x3F] = static_cast<std::uint8_t>(last);
    EXPECT_EQ(KindOf(image), ImageKind::NoImage) << last;
  }
}

TEST(ImageKindTest, OtherSignaturesAreNoImage) {
  std::vector<std::uint8_t> image = Image(0x014C, 0x010B);
  image[0x40] = 'N';
  EXPECT_EQ(KindOf(image), ImageKind::NoImage);
  image = Image(0x014C, 0x010B);
  image[0x42] = 1;
  EXPECT_EQ(KindOf(image), ImageKind::NoImage);
  image = Image(0x014C, 0x010B);
  image[0] = 'Z';
  EXPECT_EQ(KindOf(image), ImageKind::NoImage);
}

}  // namespace
}  // namespace doctor
