#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace hushbox {

/// A history, one call per line, for tests to compare.
using Lines = std::vector<std::string>;

/// Every call to the parts of a simulated platform, in order, across all parts.
///
/// The parts are "loop", "audio", "accessibility", "workspace", "processes", "notifications",
/// "login", "menu", "log" and "locale"; each part's header gives the format of its lines.
class Journal {
 public:
  /// Adds a line made of `pieces`, each streamed in turn, and counts the call.
  template <typename... Pieces>
  void add(std::string_view part, const Pieces&... pieces) {
    count(part);
    if (!keepsLines_) return;
    std::ostringstream line;
    line << std::boolalpha;
    (line << ... << pieces);
    entries_.push_back({std::string(part), line.str()});
  }

  /// Counts a call without adding a line.
  void count(std::string_view part);

  /// Returns the lines so far: those of one part as they are, those of all parts as "part: line".
  Lines lines(std::string_view part) const;
  Lines lines() const;

  /// Returns the same lines and removes them.
  Lines take(std::string_view part);
  Lines take();

  /// How many calls there have been since the start, with or without a line.
  std::size_t callCount() const { return total_; }
  std::size_t callCount(std::string_view part) const;

  /// Whether to keep lines; initially true. Long runs need only the counts.
  void keepLines(bool keep) { keepsLines_ = keep; }

 private:
  struct Entry {
    std::string part;
    std::string line;
  };

  std::vector<Entry> entries_;
  std::map<std::string, std::size_t, std::less<>> counts_;
  std::size_t total_ = 0;
  bool keepsLines_ = true;
};

}  // namespace hushbox
