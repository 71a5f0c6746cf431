#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "rehearsal/ScratchFolder.h"

namespace hushbox {

/// A folder, inside a scratch folder, that this process may be forbidden to change, even when the
/// tests are run by root: the process then becomes somebody else until the end.
class RefusedFolder {
 public:
  ~RefusedFolder() { allow(); }

  const std::filesystem::path& path() const { return path_; }

  void refuse() {
    chmod(scratch_.path().c_str(), 0755);
    chmod(path_.c_str(), 0555);
    constexpr uid_t nobody = 65534;
    if (user_ == 0 && seteuid(nobody) != 0) std::abort();
  }

  void allow() {
    if (seteuid(user_) != 0) std::abort();
    chmod(path_.c_str(), 0755);
  }

 private:
  rehearsal::ScratchFolder scratch_;
  std::filesystem::path path_ = scratch_.makeFolder("folder");
  uid_t user_ = geteuid();
};

}  // namespace hushbox
