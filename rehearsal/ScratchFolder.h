#pragma once

#include <filesystem>

namespace hushbox::rehearsal {

/// A private folder (mode 0700). The destructor removes it with all its content and ignores
/// failures.
///
/// The folder is in $TMPDIR, or in /tmp if that is unset or so long that the path of a Unix socket
/// in the folder would exceed the 108 bytes of a socket address.
class ScratchFolder {
 public:
  /// Throws DeskError if the folder cannot be created.
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

  /// Creates a folder inside, also with mode 0700, and returns its path. Throws DeskError if that
  /// fails.
  std::filesystem::path makeFolder(const std::filesystem::path& name) const;

 private:
  std::filesystem::path path_;
};

}  // namespace hushbox::rehearsal
