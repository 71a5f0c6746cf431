#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/bus/BusObject.h"

namespace hushbox {

/// A program on the accessibility bus. Only `pages` changes while it runs.
struct AtspiProgram {
  /// The application object, which is the root of the program's tree.
  BusObject root;
  /// The roots of the pages that a browser embeds from this process, which have no application
  /// object; `root` is one of them. Empty for any other program.
  std::vector<BusObject> pages{};
  /// The browser's process if a browser embeds the pages of this one.
  std::int32_t processIdentifier = 0;
  /// Whether it has the name of a Teams client.
  bool isClient = false;
  /// Whether it is built on Chromium, Gecko or WebKit, so that it may present documents.
  bool isBrowser = false;
  /// Whether it may embed pages of other processes: see EmbeddedPages.
  bool embedsPages = false;
  /// Whether it is built on Chromium, which lets labels grow stale: see LabelRefresher.
  bool labelsLag = false;

  /// Whether it may present documents of Teams.
  bool isHost() const { return isBrowser || isClient; }
  /// Whether a browser embeds its pages.
  bool isEmbedded() const { return !pages.empty(); }
};

}  // namespace hushbox
