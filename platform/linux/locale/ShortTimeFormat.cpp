#include "platform/linux/locale/ShortTimeFormat.h"

#include <algorithm>
#include <vector>

namespace hushbox {
namespace {

constexpr std::string_view plainTwelve = "%I:%M:%S %p";
constexpr std::string_view plainTwentyFour = "%H:%M:%S";

/// A conversion, from its percent sign to its letter, or the text between two.
using Piece = std::string;

/// The letter of a conversion; NUL for text.
char letter(const Piece& piece) {
  return piece.front() == '%' ? piece.back() : '\0';
}

std::vector<Piece> pieces(std::string_view format) {
  std::vector<Piece> found;
  while (!format.empty()) {
    std::size_t length = 0;
    if (format.front() == '%')
      length = std::min(format.find_first_not_of("_-0^#EO", 1), format.size() - 1) + 1;
    else
      length = std::min(format.find('%'), format.size());
    found.emplace_back(format.substr(0, length));
    format.remove_prefix(length);
  }
  return found;
}

bool contains(const std::vector<Piece>& all, std::string_view letters) {
  return std::ranges::any_of(all, [&](const Piece& piece) {
    return letter(piece) && letters.find(letter(piece)) != letters.npos;
  });
}

/// Replaces the conversions that stand for several others by those.
std::vector<Piece> expanded(const TimeConventions& conventions, std::string_view format) {
  std::vector<Piece> all;
  for (const Piece& piece : pieces(format)) {
    std::string_view meaning = piece;
    if (letter(piece) == 'T') meaning = plainTwentyFour;
    if (letter(piece) == 'R') meaning = "%H:%M";
    if (letter(piece) == 'r')
      meaning = conventions.halfDayTime.empty() ? plainTwelve : conventions.halfDayTime;
    for (Piece& part : pieces(meaning)) all.push_back(std::move(part));
  }
  return all;
}

bool isHalved(const std::vector<Piece>& all) {
  return contains(all, "Il");
}

/// The expanded format, in the given style if any.
std::vector<Piece> styled(const TimeConventions& conventions, std::optional<ClockStyle> style) {
  auto own = expanded(conventions, conventions.time);
  const bool halved = isHalved(own);
  if (!contains(own, "HIkl")) return pieces(plainTwentyFour);
  if (halved && (style == ClockStyle::twentyFourHours || !conventions.hasHalves))
    return pieces(plainTwentyFour);
  if (style == ClockStyle::twelveHours && !halved && conventions.hasHalves) {
    const auto half = expanded(conventions, conventions.halfDayTime);
    return isHalved(half) && contains(half, "pP") ? half : pieces(plainTwelve);
  }
  return own;
}

/// Removes the seconds at `index` together with their separator or the word for their unit.
void removeSeconds(std::vector<Piece>& all, std::size_t index) {
  all[index].clear();
  Piece* const before = index > 0 && !letter(all[index - 1]) ? &all[index - 1] : nullptr;
  Piece* const after =
      index + 1 < all.size() && !letter(all[index + 1]) ? &all[index + 1] : nullptr;
  if (before && (before->ends_with(':') || before->ends_with('.')))
    before->pop_back();
  else if (after)
    after->erase(0, after->find(' '));
}

std::string trimmed(std::string_view text) {
  std::string result;
  for (const char c : text)
    if (c != ' ' || (!result.empty() && result.back() != ' ')) result += c;
  if (result.ends_with(' ')) result.pop_back();
  return result;
}

}  // namespace

std::string shortTimeFormat(const TimeConventions& conventions, std::optional<ClockStyle> style) {
  std::vector<Piece> all = styled(conventions, style);
  for (std::size_t i = 0; i < all.size(); ++i) {
    const char conversion = letter(all[i]);
    if (conversion == 'S') removeSeconds(all, i);
    if (conversion == 'Z' || conversion == 'z') all[i].clear();
    // Clocks do not pad hours, unlike tables.
    if (all[i] == "%I" || all[i] == "%l") all[i] = "%-I";
    if (all[i] == "%k") all[i] = "%-H";
  }
  std::string format;
  for (const Piece& piece : all) format += piece;
  return trimmed(format);
}

}  // namespace hushbox
