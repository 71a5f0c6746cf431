#include "support/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace hushbox::text {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

using Pieces = std::vector<std::string_view>;

// Comparing

TEST(TextTest, ContainsFindsWholeCharacters) {
  EXPECT_TRUE(contains("The Jabra Link 380", "Jabra"));
  EXPECT_TRUE(contains("Jabra", "Jabra"));
  EXPECT_TRUE(contains("\u2318\u30DF\u30E5\u30FC\u30C8", "\u30DF\u30E5"));
  EXPECT_TRUE(contains("(\u2318+Shift+M)", "\u2318"));
  EXPECT_FALSE(contains("Jabr", "Jabra"));
  EXPECT_FALSE(contains("jabra JABRA", "Jabra"));
  EXPECT_FALSE(contains("", "Jabra"));
}

TEST(TextTest, EveryTextContainsTheEmptyNeedle) {
  for (const std::string_view text : {""sv, "a"sv, "\r\n"sv, "\u0301"sv, "\xFF"sv}) {
    EXPECT_TRUE(contains(text, ""));
    EXPECT_TRUE(hasPrefix(text, ""));
  }
}

TEST(TextTest, NeedleFollowedByCombiningMarkIsNotContained) {
  EXPECT_FALSE(contains("Jabra\u0301", "Jabra"));
  EXPECT_FALSE(contains("x Jabra\u200D y", "Jabra"));
  EXPECT_FALSE(contains("Jabra\uFE0F", "Jabra"));
  EXPECT_FALSE(contains("\u00E9", "e"));
  EXPECT_TRUE(contains("Jabra\u0301 and Jabra", "Jabra"));
  EXPECT_TRUE(contains("Jabra\u0301 and Jabra", "a\u0301"));
  EXPECT_TRUE(contains("\u0301Jabra", "Jabra"));
}

TEST(TextTest, NeedleThatStartsInsideACharacterIsNotContained) {
  EXPECT_FALSE(contains("e\u0301", "\u0301"));
  EXPECT_TRUE(contains("\n\u0301", "\u0301"));
  EXPECT_TRUE(contains("\u0301", "\u0301"));
  EXPECT_FALSE(contains("\u0600Jabra", "Jabra"));
  EXPECT_FALSE(contains("\u0600Jabra", "J"));
  EXPECT_TRUE(contains("\u0600Jabra", "abra"));
}

TEST(TextTest, PartOfAnEmojiOrFlagIsNotContained) {
  const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";
  EXPECT_TRUE(contains("a" + family + "b", family));
  EXPECT_FALSE(contains(family, "\U0001F468"));
  EXPECT_FALSE(contains(family, "\U0001F467"));
  const std::string german = "\U0001F1E9\U0001F1EA";
  const std::string flags = "\U0001F1E6\U0001F1E9\U0001F1EA\U0001F1E6";  // two flags: AD, EA
  EXPECT_FALSE(contains(flags, german));
  EXPECT_TRUE(contains(flags + german, german));
  EXPECT_FALSE(contains(german, "\U0001F1E9"));
}

TEST(TextTest, PartOfAHangulSyllableIsNotContained) {
  EXPECT_TRUE(contains("\uAC01", "\u1100\u1161\u11A8"));
  EXPECT_FALSE(contains("\uAC01", "\uAC00"));
  EXPECT_FALSE(contains("\uAC00\u11A8", "\uAC00"));
}

TEST(TextTest, CarriageReturnWithLineFeedIsOneCharacter) {
  EXPECT_FALSE(contains("a\r\nb", "\n"));
  EXPECT_FALSE(contains("a\r\nb", "\r"));
  EXPECT_FALSE(contains("a\r\nb", "a\r"));
  EXPECT_TRUE(contains("a\r\nb", "\r\n"));
  EXPECT_TRUE(contains("a\r\nb", "a\r\nb"));
  EXPECT_TRUE(contains("a\r\rb\n", "\r"));
  EXPECT_TRUE(contains("a\r\r\nb", "\r"));
  EXPECT_TRUE(contains("a\r\n\nb", "\n"));
  EXPECT_FALSE(hasPrefix("\r\na", "\r"));
  EXPECT_TRUE(hasPrefix("\r\na", "\r\n"));
}

TEST(TextTest, CanonicallyEquivalentTextsAreEqual) {
  EXPECT_TRUE(equal("e\u0301", "\u00E9"));
  EXPECT_TRUE(equal("\u212A", "K"));
  EXPECT_TRUE(equal("\u212B", "\u00C5"));
  EXPECT_TRUE(equal("\uAC01", "\u1100\u1161\u11A8"));
  EXPECT_TRUE(equal("q\u0307\u0323", "q\u0323\u0307"));
  EXPECT_TRUE(contains("caf\u00E9s", "fe\u0301"));
  EXPECT_TRUE(contains("cafe\u0301s", "\u00E9s"));
  EXPECT_TRUE(contains("a \u212Aelvin", "Kelvin"));
  EXPECT_TRUE(contains("a Kelvin", "\u212Aelvin"));
  EXPECT_TRUE(hasPrefix("Kelvin", "\u212Ael"));
  EXPECT_TRUE(hasPrefix("\u00E9t\u00E9", "e\u0301t"));
  EXPECT_TRUE(hasPrefix("q\u0307\u0323x", "q\u0323\u0307"));
}

TEST(TextTest, CompatibilityFormsCaseAndOrderOfEqualMarksDiffer) {
  EXPECT_FALSE(equal("\uFB01", "fi"));
  EXPECT_FALSE(equal("\uFF2D", "M"));
  EXPECT_FALSE(equal("\u00A0", " "));
  EXPECT_FALSE(equal("a", "A"));
  EXPECT_FALSE(equal("a\u0301\u0300", "a\u0300\u0301"));
  EXPECT_FALSE(equal("\r\n", "\n"));
  EXPECT_FALSE(equal("a", "ab"));
  EXPECT_TRUE(equal("", ""));
}

TEST(TextTest, PrefixMatchesWholeCharacters) {
  EXPECT_TRUE(hasPrefix("mute mic", "mute"));
  EXPECT_TRUE(hasPrefix("mute", "mute"));
  EXPECT_FALSE(hasPrefix("unmute", "mute"));
  EXPECT_FALSE(hasPrefix("Mute", "mute"));
  EXPECT_FALSE(hasPrefix("mut", "mute"));
  EXPECT_FALSE(hasPrefix("", "mute"));
  EXPECT_FALSE(hasPrefix("mute\u0301", "mute"));
  EXPECT_FALSE(hasPrefix("mut\u00E9", "mute"));
  EXPECT_TRUE(hasPrefix("mute \u0301", "mute"));
  EXPECT_FALSE(hasPrefix("e\u0301", "e"));
  EXPECT_TRUE(hasPrefix("mute\n\u0301", "mute\n"));
}

TEST(TextTest, MalformedBytesCountAsReplacementCharacters) {
  EXPECT_TRUE(equal("a\xFF", "a\uFFFD"));
  EXPECT_TRUE(contains("\xFFJabra\xE2\x82", "Jabra"));
  EXPECT_TRUE(contains("\xC3Jabra\xCC", "Jabra"));
  EXPECT_TRUE(hasPrefix("\xFF\xFEmute", "\uFFFD\uFFFDmute"));
  EXPECT_FALSE(hasPrefix("\xFFmute", "mute"));
}

// Lines

TEST(TextTest, LinesSplitAtLineFeedsWithoutEmptyPieces) {
  EXPECT_EQ(splitLines(""), Pieces{});
  EXPECT_EQ(splitLines("\n\n"), Pieces{});
  EXPECT_EQ(splitLines("a"), Pieces{"a"});
  EXPECT_EQ(splitLines("a\nb"), (Pieces{"a", "b"}));
  EXPECT_EQ(splitLines("\na\n\n b \n"), (Pieces{"a", " b "}));
}

TEST(TextTest, CarriageReturnsDoNotSplit) {
  EXPECT_EQ(splitLines("a\rb"), Pieces{"a\rb"});
  EXPECT_EQ(splitLines("a\r\nb"), Pieces{"a\r\nb"});
  EXPECT_EQ(splitLines("a\r\nb\nc\r\n"), (Pieces{"a\r\nb", "c\r\n"}));
  EXPECT_EQ(splitLines("\r\n"), Pieces{"\r\n"});
  EXPECT_EQ(splitLines("a\n\rb"), (Pieces{"a", "\rb"}));
  EXPECT_EQ(splitLines("a\r\r\nb"), Pieces{"a\r\r\nb"});
  EXPECT_EQ(splitLines("a\r\n\nb"), (Pieces{"a\r\n", "b"}));
}

TEST(TextTest, OnlyLineFeedsSplitEvenBeforeACombiningMark) {
  EXPECT_EQ(splitLines("a\x0B\x0C\u0085\u2028\u2029z"), Pieces{"a\x0B\x0C\u0085\u2028\u2029z"});
  EXPECT_EQ(splitLines("a\n\u0301b"), (Pieces{"a", "\u0301b"}));
  EXPECT_EQ(splitLines("a\xFF\n\xE2\x82\nb"), (Pieces{"a\xFF", "\xE2\x82", "b"}));
}

TEST(TextTest, PiecesAreViewsIntoTheText) {
  const std::string text = "a\nbc";
  const Pieces pieces = splitLines(text);
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(pieces[1].data(), text.data() + 2);
}

// Escaping

TEST(TextTest, PrintableTextIsUnchanged) {
  for (const std::string_view text :
       {""sv, "Jabra \\ \"Evolve\" ~"sv, "\u00E9e\u0301\u00A0\u2318"sv,
        "\U0001F468\u200D\U0001F469 \uFEFF"sv}) {
    EXPECT_EQ(escapedForTerminal(text), text);
  }
}

TEST(TextTest, ControlCharactersAreEscaped) {
  EXPECT_EQ(escapedForTerminal("a\nb\tc\rd"), "a\\nb\\tc\\rd");
  EXPECT_EQ(escapedForTerminal("\0\x07\x0B\x1B[31m\x1F\x7F"sv),
            "\\x00\\x07\\x0B\\x1B[31m\\x1F\\x7F");
  EXPECT_EQ(escapedForTerminal("\u0080\u009B\u009F"), "\\u{0080}\\u{009B}\\u{009F}");
}

TEST(TextTest, LineSeparatorsAndDirectionMarksAreEscaped) {
  EXPECT_EQ(escapedForTerminal("\u2028\u2029"), "\\u{2028}\\u{2029}");
  EXPECT_EQ(escapedForTerminal("\u061C\u200E\u200F"), "\\u{061C}\\u{200E}\\u{200F}");
  EXPECT_EQ(escapedForTerminal("\u202A\u202B\u202C\u202D\u202E"),
            "\\u{202A}\\u{202B}\\u{202C}\\u{202D}\\u{202E}");
  EXPECT_EQ(escapedForTerminal("\u2066\u2067\u2068\u2069"), "\\u{2066}\\u{2067}\\u{2068}\\u{2069}");
  EXPECT_EQ(escapedForTerminal("\u200D\u2027\u202F\u2065\u206A"), "\u200D\u2027\u202F\u2065\u206A");
}

TEST(TextTest, MalformedBytesBecomeReplacementCharacters) {
  EXPECT_EQ(escapedForTerminal("a\x9B\xE2\x82z"), "a\uFFFD\uFFFDz");
}

// Random texts

/// A copy in a heap block of exactly its size, so that AddressSanitizer detects a read past its
/// end.
struct ExactCopy {
  explicit ExactCopy(const std::string& text)
      : bytes(new char[text.size()]), view(bytes.get(), text.size()) {
    std::copy(text.begin(), text.end(), bytes.get());
  }
  std::unique_ptr<char[]> bytes;
  std::string_view view;
};

std::string randomText(std::mt19937& random, const std::vector<std::string>& alphabet,
                       std::size_t maxParts) {
  std::string text;
  for (std::size_t left = random() % (maxParts + 1); left > 0; --left) {
    text += alphabet[random() % alphabet.size()];
  }
  return text;
}

std::vector<std::string> everyByte() {
  std::vector<std::string> bytes;
  for (int byte = 0; byte < 256; ++byte) bytes.push_back(std::string(1, static_cast<char>(byte)));
  return bytes;
}

TEST(TextTest, RandomBytesAreReadWithinBounds) {
  std::mt19937 random(20);
  const std::vector<std::string> bytes = everyByte();
  const std::vector<std::string> troubles = {
      "e",      "\u00E9", "\u0301", "\u0323",     "\uAC01",    "\u1100", "\r",
      "\n",     "\xE2",   "\x82",   "\xF0",       "\x9F",      "\xED",   "\xA0",
      "\u200D", "\u0600", "\u0130", "\U0001F1E9", "\U0001F468"};
  for (int round = 0; round < 6000; ++round) {
    const std::vector<std::string>& alphabet = round % 2 == 0 ? bytes : troubles;
    const ExactCopy text(randomText(random, alphabet, 24));
    const ExactCopy part(randomText(random, alphabet, 3));

    const std::string decoded = decodeUtf8Lossy(text.view);
    ASSERT_TRUE(isValidUtf8(decoded));
    ASSERT_EQ(isValidUtf8(text.view), decoded == text.view);
    ASSERT_TRUE(equal(text.view, decoded));
    ASSERT_TRUE(isValidUtf8(lowercased(text.view)));
    ASSERT_EQ(lowercased(lowercased(text.view)), lowercased(text.view));
    ASSERT_TRUE(contains(text.view, text.view));
    ASSERT_TRUE(hasPrefix(text.view, text.view));
    if (hasPrefix(text.view, part.view)) {
      ASSERT_TRUE(contains(text.view, part.view));
    }
    const std::string spelling = canonicallyDecomposed(text.view);
    ASSERT_TRUE(equal(spelling, text.view));
    ASSERT_EQ(contains(spelling, part.view), contains(text.view, part.view));
    ASSERT_EQ(hasPrefix(spelling, part.view), hasPrefix(text.view, part.view));
    const std::string escaped = escapedForTerminal(text.view);
    ASSERT_TRUE(isValidUtf8(escaped));
    ASSERT_EQ(escapedForTerminal(escaped), escaped);
    for (const std::string_view piece : splitLines(text.view)) ASSERT_FALSE(piece.empty());
  }
}

/// Returns the characters of a text one by one: the reference for the faster comparisons.
std::vector<std::string> charactersOf(std::string_view text) {
  std::vector<std::string> characters;
  while (!text.empty()) {
    const std::size_t length = firstCharacterLength(text);
    characters.push_back(canonicallyDecomposed(text.substr(0, length)));
    text.remove_prefix(length);
  }
  return characters;
}

void expectTheResultsOfTheReference(const std::vector<std::string>& alphabet) {
  std::mt19937 random(21);
  int contained = 0;
  for (int round = 0; round < 6000; ++round) {
    const std::string text = randomText(random, alphabet, 8);
    const std::string part = randomText(random, alphabet, 3);
    const std::vector<std::string> all = charactersOf(text);
    const std::vector<std::string> some = charactersOf(part);
    const bool found =
        std::search(all.begin(), all.end(), some.begin(), some.end()) != all.end() || some.empty();
    const bool first =
        some.size() <= all.size() && std::equal(some.begin(), some.end(), all.begin());
    ASSERT_EQ(contains(text, part), found) << testing::PrintToString(std::pair(text, part));
    ASSERT_EQ(hasPrefix(text, part), first) << testing::PrintToString(std::pair(text, part));
    ASSERT_EQ(equal(text, part), all == some) << testing::PrintToString(std::pair(text, part));
    contained += found;
  }
  EXPECT_GT(contained, 600);
}

TEST(TextTest, AsciiComparisonMatchesTheReference) {
  expectTheResultsOfTheReference({"a", "b", "\r", "\n"});
}

TEST(TextTest, MixedComparisonMatchesTheReference) {
  expectTheResultsOfTheReference(
      {"e", "\u00E9", "\u0301", "\u0323", "\u0600", "\uAC00", "\u11A8", "\uAC01"});
  expectTheResultsOfTheReference(
      {"\U0001F1E6", "\U0001F1E7", "\U0001F468", "\u200D", "\uFE0F", "a"});
}

TEST(TextTest, AsciiWithoutCarriageReturnsComparesBytes) {
  std::mt19937 random(22);
  std::vector<std::string> ascii = everyByte();
  ascii.resize(128);
  std::erase(ascii, "\r");
  for (int round = 0; round < 2000; ++round) {
    const std::string text = randomText(random, ascii, 300);
    const std::string part = randomText(random, ascii, 2);
    ASSERT_EQ(contains(text, part), text.find(part) != std::string::npos);
    ASSERT_EQ(hasPrefix(text, part), text.starts_with(part));
    ASSERT_EQ(equal(text, part), text == part);
    ASSERT_EQ(decodeUtf8Lossy(text), text);
  }
}

}  // namespace
}  // namespace hushbox::text
