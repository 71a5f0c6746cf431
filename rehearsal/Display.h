#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "rehearsal/ServerProcess.h"

namespace hushbox::rehearsal {

/// An X display in memory (Xvfb, 1280 by 800 pixels, 24 bit) with a window manager (openbox), so
/// that windows can be minimised, raised and covered.
class Display {
 public:
  /// Throws DeskError if Xvfb or openbox is missing or does not start.
  Display(const Environment& environment, const std::filesystem::path& logFolder);

  /// The value for DISPLAY, such as ":3".
  const std::string& name() const { return name_; }

  /// Stops the X server, as logging out does.
  void close() { server_->stop(); }

  /// Writes a screenshot of the whole display to a PNG file. Throws DeskError if that fails.
  void screenshot(const std::filesystem::path& file) const;

 private:
  void startWindowManager();

  Environment environment_;
  std::filesystem::path logFolder_;
  std::string name_;
  std::unique_ptr<ServerProcess> server_;
  std::unique_ptr<ServerProcess> windowManager_;
};

}  // namespace hushbox::rehearsal
