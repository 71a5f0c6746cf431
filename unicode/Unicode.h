#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What the product needs of the Unicode Character Database, version 15.0.0: user-perceived
/// characters (UAX #29), canonical decomposition (UAX #15), lower case, and two character classes.
/// The encoding is in Utf8.h, the comparisons that build on this are in support/Text.h.
///
/// The tables are compiled in, because the standard library has none and the product must behave
/// the same on every platform. script/generate-unicode-tables writes them from the Unicode
/// Character Database. All functions are pure, never fail and never read past the end of their
/// text; any thread.
namespace hushbox::text {

/// The version of the compiled-in tables: "15.0.0".
std::string_view unicodeVersion();

/// Returns the length in bytes of the first user-perceived character of `text`: its first extended
/// grapheme cluster by UAX #29. 0 only for an empty text. Malformed bytes count as U+FFFD.
std::size_t firstCharacterLength(std::string_view text);

/// Returns `text` in normalisation form D. Two texts are canonically equivalent exactly if their
/// forms are equal byte for byte. The result is well-formed, with U+FFFD for malformed bytes.
std::string canonicallyDecomposed(std::string_view text);

/// Returns `text` in lower case, by the full mappings that hold in every language and position:
/// U+0130 becomes "i" and U+0307, and a capital sigma becomes U+03C3 even at the end of a word.
std::string lowercased(std::string_view text);

/// Returns the simple lower-case mapping of `codePoint`, or `codePoint` itself if it has none.
char32_t simpleLowercase(char32_t codePoint);

/// Whether `codePoint` is a decimal digit of any script (category Nd): the class \d of ICU's
/// regular expressions.
bool isDecimalDigit(char32_t codePoint);

/// Whether `codePoint` is a tab, line feed, form feed, carriage return or separator (categories Zs,
/// Zl and Zp): the class \s of ICU's regular expressions. Vertical tab and U+0085 are not in it.
bool isWhiteSpace(char32_t codePoint);

}  // namespace hushbox::text
