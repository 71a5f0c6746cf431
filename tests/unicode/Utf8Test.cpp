#include "unicode/Utf8.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "tests/unicode/UnicodeFixture.h"

namespace hushbox::text {
namespace {

using namespace std::string_literals;

TEST(Utf8Test, EveryCodePointSurvivesEncodingAndDecoding) {
  forEachCodePoint([](char32_t codePoint) {
    const std::string text = utf8({codePoint});
    const DecodedCodePoint decoded = decodeFirst(text);
    ASSERT_EQ(decoded.codePoint, codePoint);
    ASSERT_EQ(decoded.length, text.size());
    ASSERT_TRUE(decoded.wellFormed);
  });
}

TEST(Utf8Test, EncodingUsesTheShortestForm) {
  EXPECT_EQ(utf8({0x00, 0x7F}), "\x00\x7F"s);
  EXPECT_EQ(utf8({0x80, 0x7FF}), "\xC2\x80\xDF\xBF");
  EXPECT_EQ(utf8({0x800, 0xFFFF}), "\xE0\xA0\x80\xEF\xBF\xBF");
  EXPECT_EQ(utf8({0x10000, 0x10FFFF}), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(Utf8Test, InvalidCodePointsEncodeAsTheReplacementCharacter) {
  for (const char32_t codePoint : {0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0x110000, 0x7FFFFFFF}) {
    EXPECT_EQ(utf8({codePoint}), "\uFFFD");
  }
}

TEST(Utf8Test, EmptyTextDecodesToLengthZero) {
  EXPECT_EQ(decodeFirst("").length, 0u);
  EXPECT_TRUE(decodeFirst("").wellFormed);
}

TEST(Utf8Test, MalformedBytesDecodeToTheirMaximalSubpart) {
  struct Case {
    std::string bytes;
    std::size_t length;
  };
  for (const Case& c : std::initializer_list<Case>{{"\x80", 1},
                                                   {"\xBF", 1},
                                                   {"\xC0\xAF", 1},
                                                   {"\xC1\xBF", 1},
                                                   {"\xC3", 1},
                                                   {"\xC3(", 1},
                                                   {"\xE0\x80\x80", 1},
                                                   {"\xE0\x9F\xBF", 1},
                                                   {"\xE2\x82", 2},
                                                   {"\xE2\x82(", 2},
                                                   {"\xED\xA0\x80", 1},
                                                   {"\xED\xBF\xBF", 1},
                                                   {"\xF0\x8F\xBF\xBF", 1},
                                                   {"\xF0\x90\x80", 3},
                                                   {"\xF1\x80", 2},
                                                   {"\xF4\x90\x80\x80", 1},
                                                   {"\xF5\x80\x80\x80", 1},
                                                   {"\xF8\x88\x80\x80\x80", 1},
                                                   {"\xFE", 1},
                                                   {"\xFF", 1}}) {
    const DecodedCodePoint decoded = decodeFirst(c.bytes);
    EXPECT_EQ(decoded.codePoint, replacementCharacter);
    EXPECT_EQ(decoded.length, c.length) << testing::PrintToString(c.bytes);
    EXPECT_FALSE(decoded.wellFormed);
  }
}

TEST(Utf8Test, EncodedReplacementCharacterIsWellFormed) {
  EXPECT_TRUE(decodeFirst("\uFFFD").wellFormed);
  EXPECT_EQ(decodeFirst("\uFFFD").length, 3u);
}

TEST(Utf8Test, WellFormedBytesDecodeToThemselves) {
  for (const std::string& text : {""s, "Jabra Evolve2 65"s, "a\0b"s, "\u00E9\u20AC\U0001F600"s,
                                  "\uFEFFmark"s, "\uFFFD"s, "\xF4\x8F\xBF\xBF"s}) {
    EXPECT_EQ(decodeUtf8Lossy(text), text);
    EXPECT_TRUE(isValidUtf8(text));
  }
}

TEST(Utf8Test, EachMaximalMalformedSubpartDecodesToOneReplacementCharacter) {
  const std::string r = "\uFFFD";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"a\xFF", "a" + r},
      {"\x80\x80", r + r},
      {"\xC0\xAF", r + r},
      {"\xE0\x80\xAF", r + r + r},
      {"\xED\xA0\x80\xED\xB0\x80", r + r + r + r + r + r},
      {"\xF4\x90\x80\x80", r + r + r + r},
      {"\xF0\x80\x80\xAF", r + r + r + r},
      {"\xE2\x82", r},
      {"\xE2\x82z", r + "z"},
      {"\xF0\x90\x80\xC3\xA9", r + "\u00E9"},
      {"\xC3\xC3\xA9", r + "\u00E9"},
      {"a\xF1\x80\x80\xE1\x80\xC2"
       "b\x80"
       "c\x80\xBF"
       "d",
       "a" + r + r + r + "b" + r + "c" + r + r + "d"},
  };
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(decodeUtf8Lossy(bytes), text) << testing::PrintToString(bytes);
    EXPECT_FALSE(isValidUtf8(bytes)) << testing::PrintToString(bytes);
  }
}

}  // namespace
}  // namespace hushbox::text
