#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace hushbox::text {

/// What stands at the beginning of some bytes, read as UTF-8.
struct DecodedCodePoint {
  /// U+FFFD where the bytes are malformed.
  char32_t codePoint = 0;
  /// How many bytes it takes: 1 to 4; 0 only for an empty text.
  std::size_t length = 0;
  bool wellFormed = true;
};

constexpr char32_t replacementCharacter = U'\uFFFD';

/// The version of Unicode whose tables are built in, such as "15.0.0".
std::string_view unicodeVersion();

/// Decodes the code point at the beginning of `bytes`. Malformed bytes (overlong forms, surrogates,
/// values beyond U+10FFFF, sequences cut short) give U+FFFD with the length of the maximal subpart,
/// the way Unicode recommends: as far as the bytes could still have become well-formed, at least 1.
DecodedCodePoint decodeFirst(std::string_view bytes);

/// Appends `codePoint` in UTF-8; U+FFFD in place of a surrogate or a value beyond U+10FFFF.
void appendUtf8(std::string& text, char32_t codePoint);

/// Whether every byte is below 0x80.
bool isAscii(std::string_view text);

/// The length in bytes of the first user-perceived character of `text`: its first extended grapheme
/// cluster by UAX #29. 0 only for an empty text. Malformed bytes count as U+FFFD.
std::size_t firstCharacterLength(std::string_view text);

/// `text` in canonical decomposition (normalisation form D): two texts are canonically equivalent
/// when these are equal byte for byte. The result is well-formed, with U+FFFD for malformed bytes.
std::string canonicallyDecomposed(std::string_view text);

/// The simple lower-case mapping of one code point, itself where it has none.
char32_t simpleLowercase(char32_t codePoint);

/// The regular-expression class \d: general category Nd, of any script.
bool isDecimalDigit(char32_t codePoint);

/// The regular-expression class \s: tab, line feed, form feed, carriage return and the separators
/// (categories Zs, Zl and Zp). Vertical tab and U+0085 are not among them.
bool isWhiteSpace(char32_t codePoint);

}  // namespace hushbox::text
