#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "unicode/CodePoints.h"
#include "unicode/Unicode.h"
#include "unicode/Utf8.h"

/// Comparing and cleaning text, the same in every room. Text is UTF-8 and is compared by
/// user-perceived characters (extended grapheme clusters): "Jabra" followed by a combining accent
/// does not contain "Jabra". Canonically equivalent characters are equal: "e" followed by a
/// combining acute accent equals U+00E9. Malformed bytes count as U+FFFD. Nothing here depends on
/// the locale or fails. All functions are pure; any thread.
///
/// Comparisons are case-sensitive. For others, compare the lowercased() texts.
namespace hushbox::text {

/// Whether `needle` occurs in `text` as a run of whole characters. The empty needle always occurs.
bool contains(std::string_view text, std::string_view needle);

/// Whether `text` begins with the whole characters of `prefix`. The empty prefix always fits.
bool hasPrefix(std::string_view text, std::string_view prefix);

/// Whether `a` and `b` are canonically equivalent.
bool equal(std::string_view a, std::string_view b);

/// Returns the non-empty pieces of `text` between the characters "\n", as views into `text`. "\r\n"
/// is a single character other than "\n", so it does not split; nor does "\r" alone.
std::vector<std::string_view> splitLines(std::string_view text);

/// Returns `text` safe to print on a terminal or as one line of a log. Malformed bytes become
/// U+FFFD. Control characters, line and paragraph separators and the marks that change the writing
/// direction are escaped as \n, \r, \t, \xNN (other ASCII controls) or \u{NNNN}. The result is for
/// people and cannot be parsed back: a backslash stays as it is, so that a name that contains one
/// looks familiar.
std::string escapedForTerminal(std::string_view text);

}  // namespace hushbox::text
