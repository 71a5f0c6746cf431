#include "unicode/CodePoints.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace hushbox::text {
namespace {

static_assert(std::forward_iterator<CodePoints::Iterator>);

std::vector<char32_t> codePointsOf(std::string_view text) {
  const CodePoints all(text);
  return {all.begin(), all.end()};
}

TEST(CodePointsTest, EachCodePointIsReadOnce) {
  EXPECT_EQ(codePointsOf("a\u00E9\u20AC\U0001F600"),
            (std::vector<char32_t>{'a', 0xE9, 0x20AC, 0x1F600}));
  EXPECT_TRUE(codePointsOf("").empty());
}

TEST(CodePointsTest, EachMalformedSubpartReadsAsOneReplacementCharacter) {
  EXPECT_EQ(codePointsOf("a\xF0\x90\x80z\xE2\x82"),
            (std::vector<char32_t>{'a', 0xFFFD, 'z', 0xFFFD}));
}

TEST(CodePointsTest, OffsetsAreWhereTheCodePointsBegin) {
  const std::string text = "7\u0660%";
  const CodePoints all(text);
  CodePoints::Iterator it = all.begin();
  EXPECT_EQ(it.offset(), 0u);
  EXPECT_EQ((++it).offset(), 1u);
  EXPECT_EQ(it++.offset(), 1u);
  EXPECT_EQ(*it, U'%');
  EXPECT_EQ(it.offset(), 3u);
  EXPECT_EQ((++it).offset(), text.size());
  EXPECT_TRUE(it == all.end());
}

}  // namespace
}  // namespace hushbox::text
