#pragma once

#include <chrono>
#include <optional>

#include "benchmarks/Result.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/session/JournalLog.h"
#include "rehearsal/Desk.h"
#include "rehearsal/DeskError.h"
#include "teams/TeamsUI.h"

namespace hushbox {

/// Hushbox's adapters in this process, which know nothing yet, and what reading Teams through them
/// costs. Holds the platform in scope.
class TeamsReader {
 public:
  struct Cost {
    double milliseconds = 0;
    double calls = 0;
    double roundTrips = 0;
  };

  /// What `operation` costs.
  template <typename Operation>
  Cost costOf(Operation operation) const {
    const AtspiAccessibilityTree& tree = platform_.accessibility;
    const auto calls = tree.callCount();
    const auto roundTrips = tree.roundTripCount();
    const auto began = std::chrono::steady_clock::now();
    operation();
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - began;
    return {taken.count(), static_cast<double>(tree.callCount() - calls),
            static_cast<double>(tree.roundTripCount() - roundTrips)};
  }

  /// Reads until Teams is found: a browser with a large page takes seconds to present it. Throws
  /// DeskError at the deadline.
  void awaitTeams() const {
    rehearsal::waitUntil([] { return TeamsUI::currentMuteState().has_value(); },
                         rehearsal::serverTimeout, "Teams to be found");
  }

  /// What one read of Teams' state costs. Throws DeskError unless it returns `expected`.
  Cost read(std::optional<bool> expected = false) const {
    std::optional<bool> state;
    const Cost cost = costOf([&] { state = TeamsUI::currentMuteState(); });
    if (state != expected) throw rehearsal::DeskError("Teams was read wrongly");
    return cost;
  }

 private:
  SessionBusConnection bus_;
  JournalLog log_;
  LinuxPlatform platform_{bus_, log_};
};

/// The samples of several costs, to print as one result each.
struct TeamsReaderSamples {
  Result::Samples milliseconds;
  Result::Samples calls;
  Result::Samples roundTrips;

  void add(const TeamsReader::Cost& cost) {
    milliseconds.push_back(cost.milliseconds);
    calls.push_back(cost.calls);
    roundTrips.push_back(cost.roundTrips);
  }
};

}  // namespace hushbox
