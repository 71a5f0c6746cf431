#include "benchmarks/ProcessCost.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>

namespace hushbox {
namespace {

/// Sums the numbers in all lines whose label starts with `label`, such as "Private_Dirty:   12 kB".
long sumOf(const std::filesystem::path& file, std::string_view label) {
  std::ifstream lines(file);
  long sum = 0;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string name;
    long number = 0;
    if (words >> name >> number && name.starts_with(label)) sum += number;
  }
  return sum;
}

}  // namespace

long ProcessCost::privateMemory() const {
  return sumOf(folder_ + "/smaps_rollup", "Private_");
}

double ProcessCost::processorTime() const {
  std::ifstream file(folder_ + "/stat");
  std::string line;
  std::getline(file, line);
  // The name, in parentheses, may have spaces. The times are the 12th and 13th words after it.
  std::istringstream words(line.substr(line.rfind(')') + 1));
  std::string skipped;
  for (int i = 0; i < 11; ++i) words >> skipped;
  double user = 0;
  double system = 0;
  words >> user >> system;
  return 1000 * (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

std::size_t ProcessCost::countOf(const char* entries) const {
  std::error_code error;
  const std::filesystem::directory_iterator found(folder_ + "/" + entries, error);
  return static_cast<std::size_t>(std::distance(begin(found), end(found)));
}

void ProcessCost::sample() {
  std::error_code gone;
  for (const auto& entry : std::filesystem::directory_iterator(folder_ + "/task", gone)) {
    const long count = sumOf(entry.path() / "status", "voluntary_ctxt_switches");
    const auto [thread, isNew] = threads_.try_emplace(entry.path().filename());
    // A thread that started after the first sample made all its switches since then.
    if (isNew && !sampled_) thread->second.first = count;
    thread->second.last = std::max(thread->second.last, count);
  }
  sampled_ = true;
}

long ProcessCost::switches() const {
  long sum = 0;
  for (const auto& [name, thread] : threads_) sum += thread.last - thread.first;
  return sum;
}

}  // namespace hushbox
