#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "unicode/CodePoints.h"
#include "unicode/Unicode.h"

/// The rules for text that every room shares. Text is UTF-8, and what counts is what a user
/// perceives as a character (an extended grapheme cluster): "Jabra" followed by a combining accent
/// does not contain "Jabra". Canonically equivalent characters are the same: "e" with a combining
/// acute equals the one code point U+00E9. Nothing here depends on a locale, fails, or reads out of
/// bounds; malformed bytes count as U+FFFD. All functions are pure and may be called on any thread.
///
/// Letter case counts everywhere. Where it must not, compare the lowercased() texts.
namespace hushbox::text {

/// A well-formed copy of `bytes`: each maximal malformed subpart becomes one U+FFFD. A byte order
/// mark and NUL bytes are kept.
std::string decodeUtf8Lossy(std::string_view bytes);

/// Whether `bytes` is well-formed UTF-8 to its end.
bool isValidUtf8(std::string_view bytes);

/// `text` in lower case by the full mappings that hold in every language and position: U+0130
/// becomes "i" and U+0307; a capital sigma becomes U+03C3 also at the end of a word.
std::string lowercased(std::string_view text);

/// Whether `needle` occurs in `text` as a run of whole characters. The empty needle always does.
bool contains(std::string_view text, std::string_view needle);

/// Whether `text` begins with the whole characters of `prefix`. Every text has the empty prefix.
bool hasPrefix(std::string_view text, std::string_view prefix);

/// Whether `a` and `b` are canonically equivalent.
bool equal(std::string_view a, std::string_view b);

/// The non-empty pieces of `text` between the characters "\n". "\r\n" is one character and another
/// one, so it does not split and stays inside its piece; neither does "\r" alone. The pieces are
/// views into `text`.
std::vector<std::string_view> splitLines(std::string_view text);

/// `text` made safe to show on a terminal or in one line of a log: malformed bytes become U+FFFD;
/// controls, line and paragraph separators and the marks that turn the writing direction are
/// spelt out as \n, \r, \t, \xNN (other ASCII controls) or \u{NNNN}.
/// For people to read, not to be read back: a backslash in the text stays as it is, because names
/// with one should look the way the user knows them.
std::string escapedForTerminal(std::string_view text);

}  // namespace hushbox::text
