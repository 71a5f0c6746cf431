#pragma once

#include <filesystem>
#include <system_error>

namespace hushbox {

/// A file or folder that belongs to the program. It is found relative to the running executable, so
/// that an installation works wherever it is moved: first as installed, then as it lies in the
/// build folder. Returns the latter if neither exists.
inline std::filesystem::path partOfProgram(const char* installed, const char* built) {
  std::error_code error;
  const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  const auto path = (folder / installed).lexically_normal();
  return std::filesystem::exists(path, error) ? path : (folder / built).lexically_normal();
}

}  // namespace hushbox
