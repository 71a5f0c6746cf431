#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "platform/linux/bus/BusObject.h"
#include "platform/linux/bus/BusReply.h"

namespace hushbox {

/// A part of the screen that belongs to Teams: a document in a browser or a client, or a client
/// without documents as a whole.
struct AtspiSurface {
  /// Why it is taken for Teams, the strongest reason first.
  enum class Evidence { address, client, title };

  BusObject object;
  std::int32_t processIdentifier = 0;
  Evidence evidence = Evidence::title;
  bool isDocument = true;
  bool inClient = false;
  /// Whether its program lets labels grow old while the page is hidden, and how to undo it is
  /// known: see AtspiTeams::bringLabelsUpToDate().
  bool labelsLag = false;
  /// When the program was last told to bring its labels up to date.
  std::chrono::steady_clock::time_point toldAt{};
  /// When the program was last asked about it along with other calls.
  std::chrono::steady_clock::time_point askedAt{};
  /// All properties of `object`, as they were then.
  BusReply properties;
  /// Whether it was on the screen then, and so being drawn.
  bool isDrawn = false;
  /// The window that it was the front page of when it was looked for; no name when there was none.
  BusObject window;
  /// What it was directly in then; no name when it was in nothing.
  BusObject parent;
  bool windowSought = false;

  /// The control on it that was last read by itself: when the surface is asked, so is that. No name
  /// while there is none.
  BusObject control;
  /// What it answered at `askedAt`.
  BusReply controlProperties;
  BusReply controlRole;
  /// Which of its actions is a press, once that is known.
  std::optional<std::int32_t> controlPress;

  bool hasControl() const { return !control.busName.empty(); }

  void keepControl(const BusObject& object) {
    if (control == object) return;
    control = object;
    controlProperties = {};
    controlRole = {};
    controlPress.reset();
  }
};

using AtspiSurfaceRef = std::shared_ptr<AtspiSurface>;

}  // namespace hushbox
