#pragma once

#include <filesystem>

namespace hushbox::rehearsal {

/// A private folder (mode 0700) that is removed with all its content at the end of its life.
///
/// It lies in $TMPDIR, or in /tmp where that name is unset or so long that a Unix socket in the
/// folder would exceed the 108 bytes that a socket address holds. Throws DeskError when it cannot
/// be made; a failed removal is left alone.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

  /// Makes a folder inside, private as well, and returns its path.
  std::filesystem::path makeFolder(const std::filesystem::path& name) const;

 private:
  std::filesystem::path path_;
};

}  // namespace hushbox::rehearsal
