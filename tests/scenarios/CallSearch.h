#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tests/scenarios/CallEvent.h"
#include "tests/scenarios/CallModel.h"
#include "tests/scenarios/ProgramOnDesk.h"

namespace hushbox {

/// A breadth-first search through every state that the program can reach with a set of inputs. It
/// runs the real program, replaying each history from its start, and checks after every input that
/// the invariants hold and that the program is in the model's state.
///
/// Two histories lead to the same state if they agree in everything that matters later: what the
/// program publishes, its private members, the device, Teams, the model, and what is still due and
/// when. Logs and counts of the past are not part of a state.
struct CallSearch {
  /// Where the search starts.
  CallHistory start;
  CallHistory inputs;
  /// The most inputs after the start.
  std::size_t maxDepth = 0;
  ProgramOnDesk::Ties ties = ProgramOnDesk::Ties::firstScheduledFirst;
  CallModel::Rules rules = {};

  struct Failure {
    CallHistory history;
    std::string text;
  };
  struct Result {
    std::size_t states = 0;
    std::size_t transitions = 0;
    /// The depth of the last new state.
    std::size_t depth = 0;
    /// Whether there was nothing left to try before `maxDepth`.
    bool isComplete = false;
    std::optional<Failure> failure;
  };

  /// Stops at the first failure, whose history is the shortest possible.
  Result run() const;
};

/// The inputs of a press during a call and the times between them: every combination of 0, 0.1,
/// 0.3, 0.49 and 0.5 seconds, so that deadlines meet.
CallHistory pressInputs();

/// Those, and everything else that can happen to the device, to Teams and to the permissions.
CallHistory allInputs();

/// A call in an unmuted meeting that has just been polled.
CallHistory startedCall();

/// Returns "N states, N transitions, depth N", and ", complete" where it applies.
std::string summary(const CallSearch::Result& result);

}  // namespace hushbox
