#include "tests/scenarios/CallSearch.h"

#include <algorithm>
#include <cstdint>
#include <unordered_set>

#include "tests/scenarios/CallInvariants.h"

namespace hushbox {
namespace {

using Kind = CallEvent::Kind;

constexpr std::int64_t millisecond = 1'000'000;

/// One run of a history on the program and on the model.
class Replay {
 public:
  explicit Replay(const CallSearch& search)
      : program_(search.ties),
        model_(search.rules, search.ties == ProgramOnDesk::Ties::lastScheduledFirst) {
    program_.setTurnListener([this](auto now, const auto& records) {
      if (!failure_) failure_ = invariants_.check(now, records);
    });
  }

  void apply(const CallEvent& event) {
    program_.apply(event);
    model_.apply(event);
    expected_ = model_.takeState();
    actual_ = program_.takeState();
  }

  /// Returns what is wrong since the start with the invariants, or now with the state.
  std::optional<std::string> failure() const {
    if (failure_) return failure_;
    if (expected_ == actual_) return std::nullopt;
    return differences(expected_, actual_);
  }

  /// Returns everything on which the future depends.
  std::string state() const {
    std::string key;
    const auto append = [&key](std::optional<bool> value) {
      key += value ? (*value ? '1' : '0') : '?';
    };
    append(actual_.connected);
    append(actual_.headsetMuted);
    append(actual_.inCall);
    append(actual_.teamsMuted);
    append(actual_.mutedInTeams);
    key += std::to_string(actual_.volume) + ' ';
    program_.appendHiddenState(key);
    model_.appendHiddenState(key);
    return key;
  }

 private:
  ProgramOnDesk program_;
  CallModel model_;
  CallInvariants invariants_;
  std::optional<std::string> failure_;
  CallState expected_;
  CallState actual_;
};

/// A state, as the input that leads to it from an earlier one.
struct Node {
  std::size_t parent = 0;
  CallEvent input;
};

class Search {
 public:
  explicit Search(const CallSearch& search) : search_(search) {}

  CallSearch::Result run() {
    visit(search_.start, Node{});
    for (std::size_t first = 0; first < nodes_.size() && !result_.failure;) {
      if (depth_ == search_.maxDepth) return result_;
      ++depth_;
      const std::size_t end = nodes_.size();
      for (; first < end && !result_.failure; ++first) expand(first);
    }
    result_.isComplete = !result_.failure;
    return result_;
  }

 private:
  CallHistory historyOf(std::size_t node) const {
    CallHistory history;
    for (; node > 0; node = nodes_[node].parent) history.push_back(nodes_[node].input);
    history.insert(history.end(), search_.start.rbegin(), search_.start.rend());
    std::reverse(history.begin(), history.end());
    return history;
  }

  void expand(std::size_t node) {
    CallHistory history = historyOf(node);
    for (const CallEvent& input : search_.inputs) {
      if (changesNothing(history, input)) continue;
      history.push_back(input);
      ++result_.transitions;
      visit(history, Node{node, input});
      history.pop_back();
      if (result_.failure) return;
    }
  }

  void visit(const CallHistory& history, const Node& node) {
    Replay replay(search_);
    for (const CallEvent& event : history) replay.apply(event);
    if (auto failure = replay.failure()) {
      result_.failure = {history, std::move(*failure)};
    } else if (seen_.insert(replay.state()).second) {
      nodes_.push_back(node);
      result_.states = nodes_.size();
      result_.depth = depth_;
    }
  }

  /// Whether `input` sets a switch to what it already is.
  static bool changesNothing(const CallHistory& history, const CallEvent& input) {
    switch (input.kind) {
      case Kind::trust:
      case Kind::pressable:
      case Kind::readable:
      case Kind::writable:
      case Kind::useReadable: {
        const auto last =
            std::find_if(history.rbegin(), history.rend(),
                         [&input](const CallEvent& event) { return event.kind == input.kind; });
        return input.amount == (last == history.rend() ? 1 : last->amount);
      }
      default:
        return false;
    }
  }

  const CallSearch& search_;
  std::vector<Node> nodes_;
  std::unordered_set<std::string> seen_;
  std::size_t depth_ = 0;
  CallSearch::Result result_;
};

}  // namespace

CallSearch::Result CallSearch::run() const {
  return Search(*this).run();
}

CallHistory pressInputs() {
  return {{Kind::pass, 0},
          {Kind::pass, 100 * millisecond},
          {Kind::pass, 300 * millisecond},
          {Kind::pass, 490 * millisecond},
          {Kind::pass, 500 * millisecond},
          {Kind::volume, 0},
          {Kind::volume, 50},
          {Kind::teams, 0},
          {Kind::teams, 1}};
}

CallHistory allInputs() {
  CallHistory inputs = pressInputs();
  for (const CallEvent event : {CallEvent{Kind::notify, 0},
                                {Kind::use, 0},
                                {Kind::use, 1},
                                {Kind::plug, 0},
                                {Kind::plug, 80},
                                {Kind::unplug, 0},
                                {Kind::join, 0},
                                {Kind::leave, 0},
                                {Kind::quit, 0},
                                {Kind::announceDelay, 0},
                                {Kind::announceDelay, 300 * millisecond},
                                {Kind::restoreDelay, -1},
                                {Kind::restoreDelay, 300 * millisecond}}) {
    inputs.push_back(event);
  }
  for (const Kind kind :
       {Kind::trust, Kind::pressable, Kind::readable, Kind::writable, Kind::useReadable}) {
    inputs.push_back({kind, 0});
    inputs.push_back({kind, 1});
  }
  return inputs;
}

CallHistory startedCall() {
  return {{Kind::plug, 80},
          {Kind::pass, 0},
          {Kind::join, 0},
          {Kind::use, 1},
          {Kind::pass, 1'000 * millisecond}};
}

std::string summary(const CallSearch::Result& result) {
  return std::to_string(result.states) + " states, " + std::to_string(result.transitions) +
         " transitions, depth " + std::to_string(result.depth) +
         (result.isComplete ? ", complete" : "");
}

}  // namespace hushbox
