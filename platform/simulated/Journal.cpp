#include "platform/simulated/Journal.h"

namespace hushbox {

void Journal::count(std::string_view part) {
  ++total_;
  const auto found = counts_.find(part);
  if (found == counts_.end()) {
    counts_.emplace(part, 1);
  } else {
    ++found->second;
  }
}

Lines Journal::lines(std::string_view part) const {
  Lines lines;
  for (const Entry& entry : entries_) {
    if (entry.part == part) lines.push_back(entry.line);
  }
  return lines;
}

Lines Journal::lines() const {
  Lines lines;
  for (const Entry& entry : entries_) lines.push_back(entry.part + ": " + entry.line);
  return lines;
}

Lines Journal::take(std::string_view part) {
  Lines taken = lines(part);
  std::erase_if(entries_, [part](const Entry& entry) { return entry.part == part; });
  return taken;
}

Lines Journal::take() {
  Lines taken = lines();
  entries_.clear();
  return taken;
}

std::size_t Journal::callCount(std::string_view part) const {
  const auto found = counts_.find(part);
  return found == counts_.end() ? 0 : found->second;
}

}  // namespace hushbox
