#pragma once

#include <filesystem>
#include <string>

#include "platform/LoginItem.h"

namespace hushbox {

/// The program's entry among the applications that the desktop starts at login (XDG autostart):
/// a file of the bundle identifier's name. Main thread only.
///
/// An entry that the user or the desktop has switched off, that is not for this desktop, cannot be
/// read, or names a program that is not there starts nothing and counts as not registered.
class AutostartLoginItem final : public LoginItem {
 public:
  /// `folder` is where the entries are, `program` the absolute path of what is to be started.
  AutostartLoginItem(const std::filesystem::path& folder, std::string program);

  /// $XDG_CONFIG_HOME/autostart, by default ~/.config/autostart. Empty without a home.
  static std::filesystem::path sessionFolder();

  /// The file of the running program; to be asked for at its start, since an update may replace the
  /// file later. Empty when it cannot be told.
  static std::string runningProgram();

  Status status() override;

  /// Writes the entry as a whole or not at all, and makes the folder if need be. False for a
  /// program whose path cannot be put into an entry: one that is not absolute, is no UTF-8 or
  /// contains "=".
  bool registerItem() override;

  /// True, too, when there was no entry.
  bool unregisterItem() override;

 private:
  const std::filesystem::path file_;
  const std::string program_;
};

}  // namespace hushbox
