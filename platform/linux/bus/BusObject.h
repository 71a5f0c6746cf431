#pragma once

#include <compare>
#include <string>

namespace hushbox {

/// Identifies one object of one program on a bus. It stays unambiguous: a bus never reuses a unique
/// name, and toolkits do not reuse the paths of accessible objects.
struct BusObject {
  std::string busName;
  std::string path;

  friend auto operator<=>(const BusObject&, const BusObject&) = default;
};

}  // namespace hushbox
