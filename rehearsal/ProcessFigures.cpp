#include "rehearsal/ProcessFigures.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

ProcessFigures ProcessFigures::of(pid_t process) {
  const std::filesystem::path folder = "/proc/" + std::to_string(process);
  const auto count = [&](const char* name) {
    std::error_code error;
    const std::filesystem::directory_iterator entries(folder / name, error);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
  };
  ProcessFigures figures{.descriptors = count("fd"), .threads = count("task")};
  std::ifstream file(folder / "smaps_rollup");
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string name;
    long kibibytes = 0;
    words >> name >> kibibytes;
    if (name == "Private_Dirty:" || name == "Swap:") figures.writtenKibibytes += kibibytes;
    if (name == "Private_Clean:") figures.privateKibibytes += kibibytes;
  }
  figures.privateKibibytes += figures.writtenKibibytes;
  if (figures.writtenKibibytes == 0) throw DeskError("Hushbox is not running any more");
  return figures;
}

}  // namespace hushbox::rehearsal
