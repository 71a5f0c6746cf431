#pragma once

#include <string>
#include <string_view>

#include "packaging/macos/icon/IconCanvas.h"

namespace hushbox {

/// Builds an icon file: one picture per size, each an embedded PNG file.
class IconFile {
 public:
  /// `type` is the four-letter code of the picture's size and resolution.
  void add(std::string_view type, const IconCanvas& picture);

  /// Returns the whole file.
  std::string bytes() const;

 private:
  std::string entries_;
};

}  // namespace hushbox
