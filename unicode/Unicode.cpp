#include "unicode/Unicode.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <vector>

#include "unicode/CodePoints.h"

namespace hushbox::text {
namespace {

/// The values of Grapheme_Cluster_Break (UAX #29), plus Extended_Pictographic, which no code point
/// with another value has.
enum class GraphemeBreak : std::uint8_t {
  Other,
  CR,
  LF,
  Control,
  Extend,
  ZWJ,
  RegionalIndicator,
  Prepend,
  SpacingMark,
  L,
  V,
  T,
  LV,
  LVT,
  ExtendedPictographic,
};
using B = GraphemeBreak;

struct CodePointRange {
  char32_t first, last;
};

/// Grapheme_Cluster_Break, except for Other and the precomposed Hangul syllables.
struct GraphemeBreakRange {
  char32_t first, last;
  GraphemeBreak value;
};

/// Canonical_Combining_Class, where it is not 0.
struct CombiningClassRange {
  char32_t first, last;
  std::uint8_t value;
};

/// One step of canonical decomposition; `second` is 0 if the code point maps to a single one.
struct Decomposition {
  char32_t codePoint, first, second;
};

/// For every `stride`th code point from `first` to `last`, the lower-case form is the code point
/// plus `distance`.
struct LowercaseRange {
  char32_t first, last;
  std::uint8_t stride;
  std::int32_t distance;
};

#include "unicode/UnicodeTables.inc"

/// Returns the range of a sorted table that contains `codePoint`, or null.
template <typename Range, std::size_t size>
const Range* find(const Range (&ranges)[size], char32_t codePoint) {
  // Most text is ASCII, which most tables lie beyond.
  if (codePoint < ranges[0].first) return nullptr;
  const Range* range =
      std::lower_bound(std::begin(ranges), std::end(ranges), codePoint,
                       [](const Range& r, char32_t value) { return r.last < value; });
  return range != std::end(ranges) && range->first <= codePoint ? range : nullptr;
}

constexpr char32_t hangulFirst = 0xAC00;
constexpr char32_t hangulLeadingFirst = 0x1100;
constexpr char32_t hangulVowelFirst = 0x1161;
constexpr char32_t hangulTrailingBase = 0x11A7;
constexpr char32_t hangulVowelCount = 21;
constexpr char32_t hangulTrailingCount = 28;
constexpr char32_t hangulCount = 19 * hangulVowelCount * hangulTrailingCount;

bool isHangulSyllable(char32_t codePoint) {
  return codePoint >= hangulFirst && codePoint < hangulFirst + hangulCount;
}

GraphemeBreak graphemeBreak(char32_t codePoint) {
  if (codePoint >= 0x20 && codePoint < 0x7F) return B::Other;
  if (isHangulSyllable(codePoint)) {
    return (codePoint - hangulFirst) % hangulTrailingCount == 0 ? B::LV : B::LVT;
  }
  const GraphemeBreakRange* range = find(graphemeBreakRanges, codePoint);
  return range != nullptr ? range->value : B::Other;
}

/// Whether rules GB3 to GB9b, which look at two neighbouring code points only, forbid a break.
bool joins(GraphemeBreak before, GraphemeBreak after) {
  const auto isControl = [](GraphemeBreak value) {
    return value == B::CR || value == B::LF || value == B::Control;
  };
  if (before == B::CR && after == B::LF) return true;
  if (isControl(before) || isControl(after)) return false;
  if (after == B::Extend || after == B::ZWJ || after == B::SpacingMark) return true;
  if (before == B::Prepend) return true;
  switch (before) {
    case B::L:
      return after == B::L || after == B::V || after == B::LV || after == B::LVT;
    case B::LV:
    case B::V:
      return after == B::V || after == B::T;
    case B::LVT:
    case B::T:
      return after == B::T;
    default:
      return false;
  }
}

struct Mark {
  char32_t codePoint;
  std::uint8_t combiningClass;
};

std::uint8_t combiningClass(char32_t codePoint) {
  const CombiningClassRange* range = find(combiningClassRanges, codePoint);
  return range != nullptr ? range->value : std::uint8_t{0};
}

void appendDecomposed(std::vector<Mark>& marks, char32_t codePoint) {
  if (codePoint < 0x80) {
    marks.push_back({codePoint, 0});
    return;
  }
  if (isHangulSyllable(codePoint)) {
    const char32_t index = codePoint - hangulFirst;
    const char32_t trailing = index % hangulTrailingCount;
    const char32_t vowel = index / hangulTrailingCount % hangulVowelCount;
    const char32_t leading = index / hangulTrailingCount / hangulVowelCount;
    marks.push_back({hangulLeadingFirst + leading, 0});
    marks.push_back({hangulVowelFirst + vowel, 0});
    if (trailing != 0) marks.push_back({hangulTrailingBase + trailing, 0});
    return;
  }
  const Decomposition* step =
      std::lower_bound(std::begin(decompositions), std::end(decompositions), codePoint,
                       [](const Decomposition& d, char32_t value) { return d.codePoint < value; });
  if (step == std::end(decompositions) || step->codePoint != codePoint) {
    marks.push_back({codePoint, combiningClass(codePoint)});
    return;
  }
  appendDecomposed(marks, step->first);
  if (step->second != 0) appendDecomposed(marks, step->second);
}

/// Sorts each run of combining marks by class; marks of equal class keep their order.
void reorder(std::vector<Mark>& marks) {
  const auto isStarter = [](const Mark& mark) { return mark.combiningClass == 0; };
  for (auto run = marks.begin(); run != marks.end();) {
    run = std::find_if_not(run, marks.end(), isStarter);
    const auto end = std::find_if(run, marks.end(), isStarter);
    std::stable_sort(
        run, end, [](const Mark& a, const Mark& b) { return a.combiningClass < b.combiningClass; });
    run = end;
  }
}

}  // namespace

std::string_view unicodeVersion() {
  return databaseVersion;
}

std::size_t firstCharacterLength(std::string_view text) {
  DecodedCodePoint current = decodeFirst(text);
  std::size_t length = current.length;
  B before = graphemeBreak(current.codePoint);
  // GB11 to GB13 look further back: GB11 to a pictograph followed only by Extend and one ZWJ, GB12
  // and GB13 to whether the preceding regional indicator is still unpaired.
  bool inEmoji = before == B::ExtendedPictographic;
  bool indicatorAlone = before == B::RegionalIndicator;
  while (length < text.size()) {
    current = decodeFirst(text.substr(length));
    const B after = graphemeBreak(current.codePoint);
    const bool joinsEmoji = inEmoji && before == B::ZWJ && after == B::ExtendedPictographic;
    const bool pairsIndicator = indicatorAlone && after == B::RegionalIndicator;
    if (!joins(before, after) && !joinsEmoji && !pairsIndicator) break;
    inEmoji = after == B::ExtendedPictographic ||
              (inEmoji && before != B::ZWJ && (after == B::Extend || after == B::ZWJ));
    indicatorAlone = after == B::RegionalIndicator && !pairsIndicator;
    before = after;
    length += current.length;
  }
  return length;
}

std::string canonicallyDecomposed(std::string_view text) {
  if (isAscii(text)) return std::string(text);
  std::vector<Mark> marks;
  marks.reserve(text.size());
  while (!text.empty()) {
    const DecodedCodePoint next = decodeFirst(text);
    appendDecomposed(marks, next.codePoint);
    text.remove_prefix(next.length);
  }
  reorder(marks);
  std::string decomposed;
  for (const Mark& mark : marks) appendUtf8(decomposed, mark.codePoint);
  return decomposed;
}

char32_t simpleLowercase(char32_t codePoint) {
  const LowercaseRange* range = find(lowercaseRanges, codePoint);
  if (range == nullptr || (codePoint - range->first) % range->stride != 0) return codePoint;
  return static_cast<char32_t>(static_cast<std::int32_t>(codePoint) + range->distance);
}

std::string lowercased(std::string_view text) {
  std::string lower;
  lower.reserve(text.size());
  for (const char32_t codePoint : CodePoints(text)) {
    appendUtf8(lower, simpleLowercase(codePoint));
    // U+0130 is the only code point whose lower-case form has two code points.
    if (codePoint == 0x0130) appendUtf8(lower, 0x0307);
  }
  return lower;
}

bool isDecimalDigit(char32_t codePoint) {
  return find(decimalDigitRanges, codePoint) != nullptr;
}

bool isWhiteSpace(char32_t codePoint) {
  return codePoint == '\t' || codePoint == '\n' || codePoint == '\f' || codePoint == '\r' ||
         find(separatorRanges, codePoint) != nullptr;
}

}  // namespace hushbox::text
