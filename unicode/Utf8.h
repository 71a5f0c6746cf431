#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// UTF-8, as the Unicode Standard defines it. All functions are pure, never fail and never read
/// past the end of their text; any thread.
namespace hushbox::text {

/// The first code point of a text.
struct DecodedCodePoint {
  /// U+FFFD if the bytes are malformed.
  char32_t codePoint = 0;
  /// In bytes: 1 to 4; 0 only for an empty text.
  std::size_t length = 0;
  bool wellFormed = true;
};

constexpr char32_t replacementCharacter = U'\uFFFD';

/// Decodes the first code point of `bytes`. For malformed bytes (overlong forms, surrogates, values
/// above U+10FFFF, truncated sequences) it returns U+FFFD and the length of the maximal subpart, as
/// the Unicode Standard recommends: the longest start of a well-formed sequence, at least 1 byte.
DecodedCodePoint decodeFirst(std::string_view bytes);

/// Appends `codePoint` in UTF-8; appends U+FFFD for a surrogate or a value above U+10FFFF.
void appendUtf8(std::string& text, char32_t codePoint);

/// Whether every byte is below 0x80.
bool isAscii(std::string_view text);

/// Returns a well-formed copy of `bytes` in which each maximal malformed subpart is one U+FFFD.
/// Keeps a byte order mark and NUL bytes.
std::string decodeUtf8Lossy(std::string_view bytes);

/// Whether `bytes` is well-formed UTF-8.
bool isValidUtf8(std::string_view bytes);

}  // namespace hushbox::text
