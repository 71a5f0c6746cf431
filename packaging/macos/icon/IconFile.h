#pragma once

#include <string>
#include <string_view>

#include "packaging/macos/icon/IconCanvas.h"

namespace hushbox {

/// An icon file in the making: one picture for each size, each a PNG file within it.
class IconFile {
 public:
  /// `type` is the four letters that stand for the picture's size and density.
  void add(std::string_view type, const IconCanvas& picture);

  /// The whole file.
  std::string bytes() const;

 private:
  std::string entries_;
};

}  // namespace hushbox
