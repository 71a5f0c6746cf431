#pragma once

#include <filesystem>
#include <string>

#include "platform/LoginItem.h"

namespace hushbox {

/// The program's entry among the applications that the desktop starts at login (XDG autostart), a
/// file named after the bundle identifier. Main thread only.
///
/// An entry that is switched off, meant for another desktop or unreadable, or whose program does
/// not exist, starts nothing and counts as not registered. So does an entry that starts another
/// copy of the program, such as one in a build folder; registering replaces it.
class AutostartLoginItem final : public LoginItem {
 public:
  /// `folder` holds the entries; `program` is the absolute path of the program to start.
  AutostartLoginItem(const std::filesystem::path& folder, std::string program);

  /// $XDG_CONFIG_HOME/autostart, by default ~/.config/autostart. Empty without a home folder.
  static std::filesystem::path sessionFolder();

  /// The path of the running program; empty if unknown. Call it at the start, since an update may
  /// replace the file later.
  static std::string runningProgram();

  Status status() override;

  /// Writes the entry atomically, creating the folder if necessary. Returns false also for a path
  /// that cannot stand in an entry: one that is not absolute, is not UTF-8 or contains "=".
  bool registerItem() override;

  /// Returns true also when there was no entry.
  bool unregisterItem() override;

 private:
  const std::filesystem::path file_;
  const std::string program_;
};

}  // namespace hushbox
