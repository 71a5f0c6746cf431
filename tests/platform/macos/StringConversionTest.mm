#import "platform/macos/StringConversion.h"

#include "tests/platform/macos/MacFixture.h"

namespace hushbox {
namespace {

using StringConversionTest = MacFixture;

TEST_F(StringConversionTest, TextSurvivesBothWays) {
  for (const char* text : {"", "Mute", "Mute mic (⌘+Shift+M)", "🎭"}) {
    EXPECT_EQ(utf8FromString(stringFromUtf8(text)), text);
  }
}

TEST_F(StringConversionTest, ReturnsTheEmptyStringForMalformedText) {
  NSString* string = stringFromUtf8("Mute \xFF");
  ASSERT_TRUE(string != nil);
  EXPECT_EQ(string.length, 0U);
}

TEST_F(StringConversionTest, ReturnsEmptyTextForNil) {
  EXPECT_EQ(utf8FromString(nil), "");
}

TEST_F(StringConversionTest, KeepsZeroBytes) {
  const std::string text("a\0b", 3);
  EXPECT_EQ(utf8FromString(stringFromUtf8(text)), text);
}

TEST_F(StringConversionTest, ReleasesTheBytesThatItReads) {
  NSString* string = stringFromUtf8("Mute mic");
  const long before = doubles::liveObjects();
  EXPECT_EQ(utf8FromString(string), "Mute mic");
  EXPECT_EQ(doubles::liveObjects(), before);
}

TEST_F(StringConversionTest, ReadsNoFurtherThanTheText) {
  EXPECT_EQ(utf8FromString(stringFromUtf8(std::string_view("Unmute").substr(0, 2))), "Un");
}

}  // namespace
}  // namespace hushbox
