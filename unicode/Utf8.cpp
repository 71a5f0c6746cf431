#include "unicode/Utf8.h"

#include <algorithm>

#include "unicode/CodePoints.h"

namespace hushbox::text {

DecodedCodePoint decodeFirst(std::string_view bytes) {
  if (bytes.empty()) return {0, 0, true};
  const auto byteAt = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned char lead = byteAt(0);
  if (lead < 0x80) return {lead, 1, true};
  if (lead < 0xC2 || lead > 0xF4) return {replacementCharacter, 1, false};

  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  char32_t codePoint = lead & (0x7Fu >> length);
  // For some lead bytes the second byte has a narrower range. This rules out overlong forms,
  // surrogates and values above U+10FFFF.
  unsigned char lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  unsigned char highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  for (std::size_t i = 1; i < length; ++i) {
    if (i >= bytes.size() || byteAt(i) < lowest || byteAt(i) > highest) {
      return {replacementCharacter, i, false};
    }
    codePoint = codePoint << 6 | (byteAt(i) & 0x3Fu);
    lowest = 0x80;
    highest = 0xBF;
  }
  return {codePoint, length, true};
}

void appendUtf8(std::string& text, char32_t codePoint) {
  const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
  if (isSurrogate || codePoint > 0x10FFFF) codePoint = replacementCharacter;
  const auto append = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  const auto trailing = [codePoint](int shift) { return 0x80u | (codePoint >> shift & 0x3Fu); };
  if (codePoint < 0x80) {
    append(codePoint);
  } else if (codePoint < 0x800) {
    append(0xC0u | codePoint >> 6);
    append(trailing(0));
  } else if (codePoint < 0x10000) {
    append(0xE0u | codePoint >> 12);
    append(trailing(6));
    append(trailing(0));
  } else {
    append(0xF0u | codePoint >> 18);
    append(trailing(12));
    append(trailing(6));
    append(trailing(0));
  }
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string decodeUtf8Lossy(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (const char32_t codePoint : CodePoints(bytes)) appendUtf8(text, codePoint);
  return text;
}

bool isValidUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const DecodedCodePoint next = decodeFirst(bytes);
    if (!next.wellFormed) return false;
    bytes.remove_prefix(next.length);
  }
  return true;
}

}  // namespace hushbox::text
