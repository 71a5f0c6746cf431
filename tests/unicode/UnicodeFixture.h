#pragma once

#include <cstdint>
#include <functional>
#include <ios>
#include <sstream>
#include <string>
#include <vector>

#include "unicode/Utf8.h"

namespace hushbox::text {

using CodePointList = std::vector<char32_t>;

/// Returns the code points in UTF-8.
inline std::string utf8(const CodePointList& codePoints) {
  std::string text;
  for (const char32_t codePoint : codePoints) appendUtf8(text, codePoint);
  return text;
}

/// Returns "U+00E9" and the like, for messages.
inline std::string hex(char32_t codePoint) {
  std::ostringstream text;
  text << "U+" << std::hex << std::uppercase << static_cast<std::uint32_t>(codePoint);
  return text.str();
}

inline bool isSurrogate(char32_t codePoint) {
  return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}

/// Visits every code point except surrogates and, to save time, planes 4 to 13, where none is
/// assigned.
inline void forEachCodePoint(const std::function<void(char32_t)>& visit) {
  for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
    if (codePoint == 0x40000) codePoint = 0xE0000;
    if (!isSurrogate(codePoint)) visit(codePoint);
  }
}

}  // namespace hushbox::text
