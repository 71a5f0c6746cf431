#include "tests/scenarios/CallComparison.h"

#include <algorithm>
#include <utility>

#include "tests/scenarios/ProgramOnDesk.h"

namespace hushbox {
namespace {

using Kind = CallEvent::Kind;

/// Removes runs of `length` events wherever `fails` stays true.
void removeRuns(CallHistory& history, std::size_t length,
                const std::function<bool(const CallHistory&)>& fails) {
  for (std::size_t at = 0; at < history.size();) {
    CallHistory shorter = history;
    const auto first = shorter.begin() + static_cast<std::ptrdiff_t>(at);
    const auto count = std::min(length, shorter.size() - at);
    shorter.erase(first, first + static_cast<std::ptrdiff_t>(count));
    if (fails(shorter)) {
      history = std::move(shorter);
    } else {
      at += length;
    }
  }
}

/// Joins each two `pass` events in a row wherever `fails` stays true.
void joinPasses(CallHistory& history, const std::function<bool(const CallHistory&)>& fails) {
  for (std::size_t at = 0; at + 1 < history.size();) {
    CallHistory joined = history;
    joined[at].amount += joined[at + 1].amount;
    joined.erase(joined.begin() + static_cast<std::ptrdiff_t>(at) + 1);
    const bool arePasses = history[at].kind == Kind::pass && history[at + 1].kind == Kind::pass;
    if (arePasses && fails(joined)) {
      history = std::move(joined);
    } else {
      ++at;
    }
  }
}

}  // namespace

std::optional<CallDifference> compareWithModel(const CallHistory& history,
                                               const CallModel::Rules& rules) {
  ProgramOnDesk program;
  CallModel model(rules);
  for (std::size_t i = 0; i < history.size(); ++i) {
    program.apply(history[i]);
    model.apply(history[i]);
    const CallState expected = model.takeState();
    const CallState actual = program.takeState();
    if (!(expected == actual)) return CallDifference{i, differences(expected, actual)};
  }
  return std::nullopt;
}

CallHistory shrink(CallHistory history, const std::function<bool(const CallHistory&)>& fails) {
  for (std::size_t length = std::max<std::size_t>(history.size() / 2, 1); length > 0; length /= 2) {
    removeRuns(history, length, fails);
  }
  for (CallEvent& event : history) {
    const std::int64_t amount = std::exchange(event.amount, 0);
    if (!fails(history)) event.amount = amount;
  }
  joinPasses(history, fails);
  removeRuns(history, 1, fails);
  return history;
}

}  // namespace hushbox
