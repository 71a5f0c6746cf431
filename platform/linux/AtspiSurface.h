#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "platform/linux/AtspiObject.h"

namespace hushbox {

/// A part of the screen that belongs to Teams: a document in a browser or a client, or a client
/// without documents as a whole.
struct AtspiSurface {
  /// Why it is taken for Teams, the strongest reason first.
  enum class Evidence { address, client, title };

  AtspiObject object;
  std::int32_t processIdentifier = 0;
  Evidence evidence = Evidence::title;
  bool isDocument = true;
  bool inClient = false;
  /// Whether its program lets labels grow old while the page is hidden, and how to undo it is
  /// known: see AtspiTeams::bringLabelsUpToDate().
  bool labelsLag = false;
  /// When the program was last told to bring its labels up to date.
  std::chrono::steady_clock::time_point toldAt{};
};

using AtspiSurfaceRef = std::shared_ptr<AtspiSurface>;

}  // namespace hushbox
