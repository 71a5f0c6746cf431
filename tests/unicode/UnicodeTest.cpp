#include "unicode/Unicode.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/unicode/UnicodeFixture.h"

namespace hushbox::text {
namespace {

std::vector<std::string> characters(std::string_view text) {
  std::vector<std::string> result;
  while (!text.empty()) {
    const std::size_t length = firstCharacterLength(text);
    result.emplace_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return result;
}

CodePointList parseCodePoints(const std::string& field) {
  std::istringstream words(field);
  CodePointList result;
  for (std::string word; words >> word;) result.push_back(std::stoul(word, nullptr, 16));
  return result;
}

std::vector<std::string> splitAt(const std::string& line, char separator) {
  std::vector<std::string> fields;
  std::istringstream rest(line);
  for (std::string field; std::getline(rest, field, separator);) fields.push_back(field);
  return fields;
}

const std::string database = "/usr/share/unicode/";

/// Returns the content of a file of the Unicode Character Database, or nothing if it is absent.
/// Debian compresses the large files.
std::string databaseFile(const std::string& name) {
  const std::string path = database + name;
  std::ostringstream content;
  if (std::ifstream plain(path); plain) {
    content << plain.rdbuf();
  } else if (std::filesystem::exists(path + ".bz2")) {
    const std::string command = "bzip2 -dc " + path + ".bz2";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), &pclose);
    char buffer[65536];
    while (pipe) {
      const std::size_t count = std::fread(buffer, 1, sizeof buffer, pipe.get());
      if (count == 0) break;
      content.write(buffer, static_cast<std::streamsize>(count));
    }
  }
  return content.str();
}

/// Returns the lines of such a file without comments. Returns none if this machine has no copy of
/// the database, or one of another version than the compiled-in tables.
std::vector<std::string> databaseLines(const std::string& name) {
  std::string title;
  std::getline(std::ifstream(database + "DerivedNormalizationProps.txt"), title);
  if (title.find("-" + std::string(unicodeVersion()) + ".txt") == std::string::npos) return {};
  std::vector<std::string> lines;
  std::istringstream content(databaseFile(name));
  for (std::string line; std::getline(content, line);) {
    line = line.substr(0, line.find('#'));
    if (line.find_first_not_of(" \t") != std::string::npos) lines.push_back(line);
  }
  return lines;
}

/// `line` is in the format of GraphemeBreakTest.txt: "÷ 0061 × 0308 ÷ 0062 ÷".
void expectBreaks(const std::string& line) {
  std::istringstream words(line);
  std::vector<std::string> expected;
  std::string whole;
  for (std::string word; words >> word;) {
    if (word == "÷") {
      expected.emplace_back();
    } else if (word != "×") {
      expected.back() += utf8(parseCodePoints(word));
      whole += utf8(parseCodePoints(word));
    }
  }
  ASSERT_FALSE(expected.empty()) << line;
  expected.pop_back();
  EXPECT_EQ(characters(whole), expected) << line;
}

/// `line` is in the format of NormalizationTest.txt: five fields, of which the third is form D of
/// the first three and the fifth is form D of the last two.
void expectDecompositions(const std::string& line) {
  const std::vector<std::string> fields = splitAt(line, ';');
  ASSERT_GE(fields.size(), 5u) << line;
  std::vector<std::string> c;
  for (const std::string& field : fields) c.push_back(utf8(parseCodePoints(field)));
  for (const int i : {0, 1, 2}) EXPECT_EQ(canonicallyDecomposed(c[i]), c[2]) << line;
  for (const int i : {3, 4}) EXPECT_EQ(canonicallyDecomposed(c[i]), c[4]) << line;
}

// User-perceived characters

// One line per rule and per pitfall, checked also where the database is absent.
TEST(UnicodeTest, CharactersFollowEachRule) {
  for (const char* line : {"÷ 0061 ÷ 0062 ÷",
                           "÷ 000D × 000A ÷ 0061 ÷ 000A ÷ 0308 ÷",
                           "÷ 000D ÷ 000D × 000A ÷ 000A ÷",
                           "÷ 000A ÷ 000D ÷",
                           "÷ 000D ÷ 0308 ÷ 000A ÷",
                           "÷ 0001 ÷ 0308 ÷",
                           "÷ 0600 ÷ 000D ÷",
                           "÷ 1100 × 1100 ÷",
                           "÷ 1100 × 1160 × 11A8 ÷",
                           "÷ 1100 × AC00 × 11A8 ÷ 1100 ÷",
                           "÷ 1100 × AC01 × 11A8 ÷ 1160 ÷",
                           "÷ AC00 × 1160 ÷",
                           "÷ AC01 ÷ 1160 ÷",
                           "÷ AC01 ÷ AC00 ÷",
                           "÷ D788 × 11A8 ÷",
                           "÷ D7A3 × 11A8 ÷",
                           "÷ 11A8 ÷ AC00 ÷",
                           "÷ 0061 × 0308 ÷ 0062 ÷",
                           "÷ 0061 × 0903 ÷ 0062 ÷",
                           "÷ 0061 ÷ 0600 × 0062 ÷",
                           "÷ 0600 × 1F1E6 × 1F1E7 ÷ 1F1E8 ÷",
                           "÷ 0061 × 200D ÷ 0062 ÷",
                           "÷ 1F6D1 × 200D × 1F6D1 ÷",
                           "÷ 2701 × 200D × 2701 ÷",
                           "÷ 0061 × 200D ÷ 1F6D1 ÷",
                           "÷ 1F476 × 1F3FF ÷ 1F476 ÷",
                           "÷ 0061 × 1F3FF ÷ 1F476 × 200D × 1F6D1 ÷",
                           "÷ 1F476 × 1F3FF × 0308 × 200D × 1F476 × 1F3FF ÷",
                           "÷ 1F6D1 × 200D × 0308 × 200D ÷ 1F6D1 ÷",
                           "÷ 1F6D1 × 200D × 200D ÷ 1F6D1 ÷",
                           "÷ 1F6D1 × 0903 × 200D ÷ 1F6D1 ÷",
                           "÷ 1F468 × 200D × 1F469 × 200D × 1F467 × 200D × 1F466 ÷",
                           "÷ 1F1E6 × 1F1E7 ÷ 1F1E8 ÷ 0062 ÷",
                           "÷ 0061 ÷ 1F1E6 × 1F1E7 ÷ 1F1E8 × 1F1E9 ÷ 0062 ÷",
                           "÷ 0061 ÷ 1F1E6 × 1F1E7 × 200D ÷ 1F1E8 ÷ 0062 ÷",
                           "÷ 0061 ÷ 1F1E6 × 200D ÷ 1F1E7 × 1F1E8 ÷ 0062 ÷",
                           "÷ 0030 × FE0F × 20E3 ÷ 0030 ÷",
                           "÷ 1F3F4 × E0067 × E0062 × E007F ÷ 0061 ÷",
                           "÷ 0378 ÷ 0378 ÷"}) {
    expectBreaks(line);
  }
}

TEST(UnicodeTest, CharactersMatchUnicodesTestFile) {
  const std::vector<std::string> lines = databaseLines("auxiliary/GraphemeBreakTest.txt");
  if (lines.empty()) GTEST_SKIP() << "no Unicode Character Database of the right version here";
  EXPECT_GE(lines.size(), 600u);
  for (const std::string& line : lines) expectBreaks(line);
}

TEST(UnicodeTest, EmptyTextHasNoFirstCharacter) {
  EXPECT_EQ(firstCharacterLength(""), 0u);
}

TEST(UnicodeTest, MalformedBytesCountAsReplacementCharacters) {
  EXPECT_EQ(characters("a\xFF\u0301z"), (std::vector<std::string>{"a", "\xFF\u0301", "z"}));
  EXPECT_EQ(characters("\xE2\x82\xE2\x82"), (std::vector<std::string>{"\xE2\x82", "\xE2\x82"}));
}

// Normalisation

TEST(UnicodeTest, DecompositionFollowsEachRule) {
  for (const char* line :
       {"00C8;00C8;0045 0300;00C8;0045 0300;",
        "1E14;1E14;0045 0304 0300;1E14;0045 0304 0300;",
        "0112 0300;1E14;0045 0304 0300;1E14;0045 0304 0300;",
        "0045 0300 0304;00C8 0304;0045 0300 0304;00C8 0304;0045 0300 0304;",
        "1E0A 0323;1E0C 0307;0044 0323 0307;1E0C 0307;0044 0323 0307;",
        "0044 031B 0307 0323;1E0C 031B 0307;0044 031B 0323 0307;1E0C 031B 0307;0044 031B 0323 "
        "0307;",
        "05B8 05B9 05B1 0591 05C3 05B0 05AC 059F;05B1 05B8 05B9 0591 05C3 05B0 05AC 059F;"
        "05B1 05B8 05B9 0591 05C3 05B0 05AC 059F;05B1 05B8 05B9 0591 05C3 05B0 05AC 059F;"
        "05B1 05B8 05B9 0591 05C3 05B0 05AC 059F;",
        "1100 AC00 11A8;1100 AC01;1100 1100 1161 11A8;1100 AC01;1100 1100 1161 11A8;",
        "AC00;AC00;1100 1161;AC00;1100 1161;",
        "AC01;AC01;1100 1161 11A8;AC01;1100 1161 11A8;",
        "D7A3;D7A3;1112 1175 11C2;D7A3;1112 1175 11C2;",
        "00A0;00A0;00A0;0020;0020;",
        "2126;03A9;03A9;03A9;03A9;",
        "212A;004B;004B;004B;004B;",
        "212B;00C5;0041 030A;00C5;0041 030A;",
        "0344;0308 0301;0308 0301;0308 0301;0308 0301;",
        "0958;0915 093C;0915 093C;0915 093C;0915 093C;",
        "F900;8C48;8C48;8C48;8C48;",
        "1D160;1D158 1D165 1D16E;1D158 1D165 1D16E;1D158 1D165 1D16E;1D158 1D165 1D16E;",
        "2FA1D;2A600;2A600;2A600;2A600;"}) {
    expectDecompositions(line);
  }
}

TEST(UnicodeTest, DecompositionMatchesUnicodesTestFile) {
  const std::vector<std::string> lines = databaseLines("NormalizationTest.txt");
  if (lines.empty()) GTEST_SKIP() << "no Unicode Character Database of the right version here";
  EXPECT_GE(lines.size(), 19000u);
  std::vector<bool> listed(0x110000, false);
  for (const std::string& line : lines) {
    if (line.front() == '@') continue;
    expectDecompositions(line);
    const CodePointList first = parseCodePoints(splitAt(line, ';').front());
    if (first.size() == 1) listed[first.front()] = true;
  }
  forEachCodePoint([&](char32_t codePoint) {
    const std::string text = utf8({codePoint});
    if (!listed[codePoint]) {
      ASSERT_EQ(canonicallyDecomposed(text), text);
    }
  });
}

TEST(UnicodeTest, MarksOfEqualClassKeepTheirOrderInLongRuns) {
  std::string above;
  for (char32_t mark = 0x314; mark >= 0x300; --mark) appendUtf8(above, mark);
  EXPECT_EQ(canonicallyDecomposed("a" + above + "\u0323\u0323"), "a\u0323\u0323" + above);
}

TEST(UnicodeTest, DecompositionReplacesMalformedBytes) {
  EXPECT_EQ(canonicallyDecomposed("\u00E9\xFF\xE2\x82"), "e\u0301\uFFFD\uFFFD");
}

TEST(UnicodeTest, DecompositionOfACharacterIsOneCharacter) {
  forEachCodePoint([](char32_t codePoint) {
    const std::string decomposed = canonicallyDecomposed(utf8({codePoint}));
    ASSERT_EQ(firstCharacterLength(decomposed), decomposed.size()) << hex(codePoint);
  });
}

// Case and classes

TEST(UnicodeTest, SimpleLowercaseMapsLettersOfManyScripts) {
  const std::initializer_list<std::pair<char32_t, char32_t>> pairs = {
      {'A', 'a'},          {'Z', 'z'},         {'[', '['},         {'a', 'a'},
      {0xC4, 0xE4},        {0xD7, 0xD7},       {0xDF, 0xDF},       {0x100, 0x101},
      {0x101, 0x101},      {0x130, 'i'},       {0x178, 0xFF},      {0x1C4, 0x1C6},
      {0x1C5, 0x1C6},      {0x3A3, 0x3C3},     {0x410, 0x430},     {0x13A0, 0xAB70},
      {0x1C90, 0x10D0},    {0x1E9E, 0xDF},     {0x1F88, 0x1F80},   {0x212A, 'k'},
      {0x2160, 0x2170},    {0x10400, 0x10428}, {0x1E921, 0x1E943}, {0x4E00, 0x4E00},
      {0x10FFFF, 0x10FFFF}};
  for (const auto& [upper, lower] : pairs) {
    EXPECT_EQ(simpleLowercase(upper), lower) << hex(upper);
  }
}

TEST(UnicodeTest, LowercasingCoversEveryScript) {
  EXPECT_EQ(lowercased(""), "");
  EXPECT_EQ(lowercased("Unmute (Ctrl+Shift+M) 09 [@`{"), "unmute (ctrl+shift+m) 09 [@`{");
  EXPECT_EQ(lowercased("\u00C4\u00D6\u00DC\u1E9E"), "\u00E4\u00F6\u00FC\u00DF");
  EXPECT_EQ(lowercased("\u0412\u042B\u041A\u041B"), "\u0432\u044B\u043A\u043B");
  EXPECT_EQ(lowercased("\U00010400"), "\U00010428");
}

TEST(UnicodeTest, LowercasingDependsOnNeitherLanguageNorPosition) {
  EXPECT_EQ(lowercased("CHARGING"), "charging");
  EXPECT_EQ(lowercased("\u0130I"), "i\u0307i");
  EXPECT_EQ(lowercased("\u03A3\u0391\u03A3"), "\u03C3\u03B1\u03C3");
}

TEST(UnicodeTest, LowercasingKeepsCharactersWithoutCase) {
  EXPECT_EQ(lowercased("\u2318 \u30DF\u30E5\u30FC\u30C8 \U0001F600"),
            "\u2318 \u30DF\u30E5\u30FC\u30C8 \U0001F600");
  EXPECT_EQ(lowercased("A\xFFZ"), "a\uFFFDz");
}

TEST(UnicodeTest, DecimalDigitsIncludeThoseOfEveryScript) {
  for (const char32_t digit : {0x30, 0x39, 0x660, 0x969, 0xFF10, 0x1D7CE, 0x1D7FF, 0x1FBF9}) {
    EXPECT_TRUE(isDecimalDigit(digit)) << hex(digit);
  }
  for (const char32_t other : {0x2F, 0x3A, 0x41, 0xB2, 0xBD, 0x2160, 0x2460, 0x3007, 0x4E00}) {
    EXPECT_FALSE(isDecimalDigit(other)) << hex(other);
  }
}

TEST(UnicodeTest, ThereAre680DecimalDigits) {
  int count = 0;
  forEachCodePoint([&](char32_t codePoint) { count += isDecimalDigit(codePoint); });
  EXPECT_EQ(count, 680);
}

TEST(UnicodeTest, WhiteSpaceIsFourControlCharactersAndTheSeparators) {
  CodePointList found;
  forEachCodePoint([&](char32_t codePoint) {
    if (isWhiteSpace(codePoint)) found.push_back(codePoint);
  });
  EXPECT_EQ(found, (CodePointList{0x09,   0x0A,   0x0C,   0x0D,   0x20,   0xA0,   0x1680, 0x2000,
                                  0x2001, 0x2002, 0x2003, 0x2004, 0x2005, 0x2006, 0x2007, 0x2008,
                                  0x2009, 0x200A, 0x2028, 0x2029, 0x202F, 0x205F, 0x3000}));
}

TEST(UnicodeTest, CaseAndDigitsOfEveryCodePointMatchTheDatabase) {
  const std::vector<std::string> lines = databaseLines("UnicodeData.txt");
  if (lines.empty()) GTEST_SKIP() << "no Unicode Character Database of the right version here";
  EXPECT_GE(lines.size(), 34000u);
  std::vector<char32_t> lower(0x110000, 0);
  std::vector<bool> digit(0x110000, false);
  for (const std::string& line : lines) {
    const std::vector<std::string> fields = splitAt(line + ";", ';');
    const char32_t codePoint = parseCodePoints(fields[0]).front();
    digit[codePoint] = fields[2] == "Nd";
    if (!fields[13].empty()) lower[codePoint] = parseCodePoints(fields[13]).front();
  }
  forEachCodePoint([&](char32_t codePoint) {
    ASSERT_EQ(simpleLowercase(codePoint), lower[codePoint] != 0 ? lower[codePoint] : codePoint);
    ASSERT_EQ(isDecimalDigit(codePoint), digit[codePoint]);
  });
}

}  // namespace
}  // namespace hushbox::text
