#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "rehearsal/Desk.h"
#include "rehearsal/HushboxProcess.h"
#include "rehearsal/MeetingPage.h"
#include "rehearsal/Panel.h"
#include "rehearsal/ProcessFigures.h"

namespace hushbox::rehearsal {

/// Kills and restarts one server again and again while Hushbox runs, with a meeting open, and
/// checks after each outage that Hushbox has recovered, has pressed nothing, and holds what it held
/// before.
class ServerRestarts {
 public:
  ServerRestarts(AudioFlavour flavour, const std::string& program);

  /// Each plays that many outages and prints one line about them. Faults are printed when they are
  /// found, to standard error.
  void restartSoundServer(int count);
  void restartPanel(int count);

  int failures() const { return failures_; }

 private:
  /// The first outages, after which memory and descriptors must not grow.
  static constexpr int warmUp = 25;

  /// One kind of server: how to end it, start it, and how to see that Hushbox is back.
  struct Server {
    std::string name;
    std::function<void()> kill;
    std::function<void()> start;
    std::function<bool()> isBack;
  };

  void restart(const Server& server, int count);
  void playOutage(const Server& server, int outage);
  void sampleFigures();
  void checkPress();
  void reportFault(const std::string& what);

  Desk desk_;
  MeetingPage meeting_;
  std::optional<Panel> panel_;
  HushboxProcess hushbox_;
  std::size_t expectedPresses_ = 0;
  int failures_ = 0;
  /// Of the outages in progress: how long each recovery took, log records each, and what Hushbox
  /// held after each.
  std::vector<std::chrono::milliseconds> times_;
  std::vector<long> records_;
  std::vector<ProcessFigures> figures_;
};

}  // namespace hushbox::rehearsal
