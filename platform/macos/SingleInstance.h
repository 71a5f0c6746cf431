#pragma once

namespace hushbox {

/// Keeps a login session to one Hushbox: two would press Teams' button twice. Launch Services
/// compare paths, not bundle identifiers, so they start an installed copy next to a built one.
class SingleInstance {
 public:
  /// Returns false if another process of this bundle identifier runs in the session. Of two that
  /// start at the same time the one with the lower process identifier is first. Outside a bundle
  /// there is nothing to compare and the result is true. Main thread only; call after creating the
  /// shared application.
  static bool isFirst();
};

}  // namespace hushbox
