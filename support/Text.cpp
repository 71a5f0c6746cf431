#include "support/Text.h"

#include <cstddef>

namespace hushbox::text {
namespace {

/// For each byte offset in `text`, including its end, whether a character begins or ends there.
std::vector<bool> characterBoundaries(std::string_view text) {
  std::vector<bool> boundaries(text.size() + 1, false);
  std::size_t offset = 0;
  boundaries[0] = true;
  while (offset < text.size()) {
    offset += firstCharacterLength(text.substr(offset));
    boundaries[offset] = true;
  }
  return boundaries;
}

/// Whether comparing bytes is the same as comparing characters: in ASCII, only "\r\n" is a
/// character of more than one byte.
bool bytesAreCharacters(std::string_view text, std::string_view part) {
  return isAscii(text) && isAscii(part) && text.find('\r') == std::string_view::npos;
}

bool changesWritingDirection(char32_t codePoint) {
  return codePoint == 0x061C || codePoint == 0x200E || codePoint == 0x200F ||
         (codePoint >= 0x202A && codePoint <= 0x202E) ||
         (codePoint >= 0x2066 && codePoint <= 0x2069);
}

bool needsEscape(char32_t codePoint) {
  const bool isControl = codePoint < 0x20 || (codePoint >= 0x7F && codePoint <= 0x9F);
  const bool separatesLines = codePoint == 0x2028 || codePoint == 0x2029;
  return isControl || separatesLines || changesWritingDirection(codePoint);
}

void appendHex(std::string& text, char32_t value, int digits) {
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
    text.push_back("0123456789ABCDEF"[value >> shift & 0xF]);
  }
}

void appendEscape(std::string& text, char32_t codePoint) {
  if (codePoint == '\n') {
    text += "\\n";
  } else if (codePoint == '\r') {
    text += "\\r";
  } else if (codePoint == '\t') {
    text += "\\t";
  } else if (codePoint < 0x80) {
    text += "\\x";
    appendHex(text, codePoint, 2);
  } else {
    text += "\\u{";
    appendHex(text, codePoint, 4);
    text += '}';
  }
}

}  // namespace

bool contains(std::string_view text, std::string_view needle) {
  if (bytesAreCharacters(text, needle)) return text.find(needle) != std::string_view::npos;
  // The boundaries are those of the decomposed text, so that equivalent texts give the same result.
  // A match that begins and ends on a boundary has the same boundaries inside as the needle.
  const std::string searched = canonicallyDecomposed(text);
  const std::string sought = canonicallyDecomposed(needle);
  const std::vector<bool> boundaries = characterBoundaries(searched);
  for (std::size_t at = searched.find(sought); at != std::string::npos;
       at = searched.find(sought, at + 1)) {
    if (boundaries[at] && boundaries[at + sought.size()]) return true;
  }
  return false;
}

bool hasPrefix(std::string_view text, std::string_view prefix) {
  // What follows the first byte after an ASCII prefix does not matter.
  if (const auto start = text.substr(0, prefix.size() + 1); bytesAreCharacters(start, prefix))
    return start.substr(0, prefix.size()) == prefix;
  const std::string whole = canonicallyDecomposed(text);
  const std::string start = canonicallyDecomposed(prefix);
  return whole.compare(0, start.size(), start) == 0 && characterBoundaries(whole)[start.size()];
}

bool equal(std::string_view a, std::string_view b) {
  return a == b || canonicallyDecomposed(a) == canonicallyDecomposed(b);
}

std::vector<std::string_view> splitLines(std::string_view text) {
  std::vector<std::string_view> pieces;
  std::size_t start = 0;
  const auto endPiece = [&](std::size_t end) {
    if (end > start) pieces.push_back(text.substr(start, end - start));
    start = end + 1;
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n' && (i == 0 || text[i - 1] != '\r')) endPiece(i);
  }
  endPiece(text.size());
  return pieces;
}

std::string escapedForTerminal(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (const char32_t codePoint : CodePoints(text)) {
    if (needsEscape(codePoint)) {
      appendEscape(escaped, codePoint);
    } else {
      appendUtf8(escaped, codePoint);
    }
  }
  return escaped;
}

}  // namespace hushbox::text
