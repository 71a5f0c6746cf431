#pragma once

#include <compare>
#include <string>

namespace hushbox {

/// Names one object of one program on a bus. A unique bus name is never given out again while the
/// bus lives, and accessible objects' paths are not reused by the toolkits, so this never comes to
/// mean something else.
struct BusObject {
  std::string busName;
  std::string path;

  friend auto operator<=>(const BusObject&, const BusObject&) = default;
};

}  // namespace hushbox
