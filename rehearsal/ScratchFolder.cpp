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

// The browser appends up to 60 bytes: a folder of its own with a socket in it.
constexpr std::size_t maxParentBytes = 32;

std::string parentFolder() {
  const char* configured = std::getenv("TMPDIR");
  if (!configured || !*configured || std::strlen(configured) > maxParentBytes) return "/tmp";
  return configured;
}

}  // namespace

ScratchFolder::ScratchFolder() {
  std::string name = parentFolder() + "/hushbox-XXXXXX";
  if (!mkdtemp(name.data())) {
    throw DeskError("cannot create the scratch folder " + name + ": " + std::strerror(errno));
  }
  path_ = name;
}

ScratchFolder::~ScratchFolder() {
  // Removal can fail while a process that was just killed still writes into the folder.
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
    throw DeskError("cannot create the folder " + folder.string());
  }
  return folder;
}

}  // namespace hushbox::rehearsal
