#include "rehearsal/Programs.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

bool canRun(const std::filesystem::path& file) {
  std::error_code failed;
  return std::filesystem::is_regular_file(file, failed) && access(file.c_str(), X_OK) == 0;
}

/// Returns an empty string if the program is not found.
std::string lookUp(std::string_view name) {
  if (name.find('/') != std::string_view::npos) return canRun(name) ? std::string(name) : "";
  const char* path = std::getenv("PATH");
  std::istringstream folders(path ? path : "/usr/local/bin:/usr/bin:/bin");
  for (std::string folder; std::getline(folders, folder, ':');) {
    const std::filesystem::path file = std::filesystem::path(folder) / name;
    if (canRun(file)) return file.string();
  }
  return "";
}

}  // namespace

std::string findProgram(std::string_view name) {
  return findProgram(std::vector<std::string>{std::string(name)});
}

std::string findProgram(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (std::string file = lookUp(name); !file.empty()) return file;
  }
  throw DeskError(names.back() + " is not installed: run script/bootstrap");
}

bool isInstalled(std::string_view name) {
  return !lookUp(name).empty();
}

}  // namespace hushbox::rehearsal
