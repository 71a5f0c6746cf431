#pragma once

#include <cstdint>
#include <memory>

#include "platform/linux/bus/BusObject.h"

namespace hushbox {

/// A part of the screen that may belong to Teams: a document in a browser or in a client, or a
/// client without documents as a whole.
struct TeamsDocument {
  /// Why it counts as Teams, the strongest evidence first.
  enum class Evidence { address, client, title };

  BusObject object;
  std::int32_t processIdentifier = 0;
  /// False for a client as a whole.
  bool isDocument = true;
  bool inClient = false;
  /// Whether its program lets labels grow stale while the page is hidden, and can be made to
  /// refresh them: see LabelRefresher.
  bool labelsLag = false;
  Evidence evidence = Evidence::title;
  /// Whether its name decides: its browser reports neither an address nor a title among its
  /// attributes.
  bool nameDecides = false;
};

using TeamsDocumentRef = std::shared_ptr<TeamsDocument>;

}  // namespace hushbox
