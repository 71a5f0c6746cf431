#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <ostream>
#include <string>

#include "tests/scenarios/CallEvent.h"
#include "tests/scenarios/CallModel.h"

namespace hushbox {

/// Where the program first differs from the model.
struct CallDifference {
  /// The index of the event in the history.
  std::size_t event = 0;
  /// What differs, one line per member of the state.
  std::string text;

  friend bool operator==(const CallDifference&, const CallDifference&) = default;
  friend void PrintTo(const CallDifference& difference, std::ostream* out) {
    *out << "after event " << difference.event << ":\n" << difference.text;
  }
};

/// Runs the history on the model and on the program, on a new simulated desk, and compares them
/// after every event. Returns nullopt if they never differ.
std::optional<CallDifference> compareWithModel(const CallHistory& history,
                                               const CallModel::Rules& rules = {});

/// Returns a history as short and plain as can be found quickly, of which `fails` is still true. It
/// must be true of `history`.
CallHistory shrink(CallHistory history, const std::function<bool(const CallHistory&)>& fails);

}  // namespace hushbox
