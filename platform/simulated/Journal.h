#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace hushbox {

/// What tests compare: a whole history, one call a line.
using Lines = std::vector<std::string>;

/// Every call that was made to the parts of a simulated platform, in order, across all parts.
///
/// Parts are named "loop", "audio", "accessibility", "workspace", "processes", "notifications",
/// "login", "menu", "log" and "locale"; each part's header says what its lines look like.
class Journal {
 public:
  /// Adds the line that `pieces` make when they are streamed one after the other.
  template <typename... Pieces>
  void add(std::string_view part, const Pieces&... pieces) {
    count(part);
    if (!keepsLines_) return;
    std::ostringstream line;
    line << std::boolalpha;
    (line << ... << pieces);
    entries_.push_back({std::string(part), line.str()});
  }

  /// Counts a call that is not worth a line.
  void count(std::string_view part);

  /// The lines so far: of one part as they are, of all parts as "part: line".
  Lines lines(std::string_view part) const;
  Lines lines() const;

  /// The same, and forgets them.
  Lines take(std::string_view part);
  Lines take();

  /// How many calls there have been since the beginning, lines or not.
  std::size_t callCount() const { return total_; }
  std::size_t callCount(std::string_view part) const;

  /// Whether lines are kept (they are at first); long runs need only the counts.
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
