#include "rehearsal/ScratchFolder.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

// The browser appends the longest name: a folder of its own with a socket in it, 60 bytes.
constexpr std::size_t longestParent = 32;

std::string parentFolder() {
  const char* wished = std::getenv("TMPDIR");
  if (!wished || !*wished || std::strlen(wished) > longestParent) return "/tmp";
  return wished;
}

}  // namespace

ScratchFolder::ScratchFolder() {
  std::string name = parentFolder() + "/hushbox-XXXXXX";
  if (!mkdtemp(name.data())) {
    throw DeskError("no scratch folder can be made at " + name + ": " + std::strerror(errno));
  }
  path_ = name;
}

ScratchFolder::~ScratchFolder() {
  // A process that has just been ended may still have been writing into it at the first attempt.
  for (int attempt = 0; attempt < 3; ++attempt) {
    std::error_code failed;
    std::filesystem::remove_all(path_, failed);
    if (!failed) return;
  }
}

std::filesystem::path ScratchFolder::makeFolder(const std::filesystem::path& name) const {
  const std::filesystem::path folder = path_ / name;
  std::error_code failed;
  std::filesystem::create_directories(folder, failed);
  if (failed || chmod(folder.c_str(), 0700) != 0) {
    throw DeskError("the folder " + folder.string() + " cannot be made");
  }
  return folder;
}

}  // namespace hushbox::rehearsal
