#include "battery/BatteryReading.h"

#include <charconv>
#include <string>

#include "support/Text.h"
#include "unicode/CodePoints.h"

namespace hushbox {
namespace {

struct Match {
  std::string_view level;
  std::string_view stateWord;
};

/// Returns the leftmost match of (\d+)%;\s*([^;\s]+) in the line. The character after each part
/// cannot belong to that part, so the match needs no backtracking.
std::optional<Match> findLevelAndState(std::string_view line) {
  const text::CodePoints codePoints(line);
  const auto end = codePoints.end();
  const auto skip = [&end](auto& at, auto belongs) {
    const std::size_t from = at.offset();
    while (at != end && belongs(*at)) ++at;
    return at.offset() - from;
  };
  const auto isNoDigit = [](char32_t c) { return !text::isDecimalDigit(c); };
  auto at = codePoints.begin();
  for (skip(at, isNoDigit); at != end; skip(at, isNoDigit)) {
    const std::size_t levelStart = at.offset();
    const std::size_t levelLength = skip(at, text::isDecimalDigit);
    if (!line.substr(at.offset()).starts_with("%;")) continue;
    auto next = at;
    ++ ++next;
    skip(next, text::isWhiteSpace);
    const std::size_t wordStart = next.offset();
    const std::size_t wordLength =
        skip(next, [](char32_t c) { return c != U';' && !text::isWhiteSpace(c); });
    if (wordLength == 0) continue;
    return Match{line.substr(levelStart, levelLength), line.substr(wordStart, wordLength)};
  }
  return std::nullopt;
}

/// Returns nullopt unless the digits are all ASCII and the number fits in 64 bits.
std::optional<std::int64_t> decimalNumber(std::string_view digits) {
  std::int64_t number = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

}  // namespace

std::optional<BatteryReading> parseBatteryReading(std::string_view output,
                                                  std::string_view nameMatch) {
  const std::string decoded = text::decodeUtf8Lossy(output);
  for (const std::string_view line : text::splitLines(decoded)) {
    if (!text::contains(line, nameMatch)) continue;
    const auto match = findLevelAndState(line);
    if (!match) return std::nullopt;
    const auto level = decimalNumber(match->level);
    if (!level) return std::nullopt;
    const std::string state = text::lowercased(match->stateWord);
    const bool charging =
        text::equal(state, "charging") || text::equal(state, "charged") || text::equal(state, "ac");
    return BatteryReading{*level, charging};
  }
  return std::nullopt;
}

}  // namespace hushbox
