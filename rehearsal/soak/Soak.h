#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "rehearsal/soak/SoakDesk.h"
#include "rehearsal/soak/SoakModel.h"

namespace hushbox::rehearsal {

/// Plays random events on a SoakDesk and compares what it shows after each one with the SoakModel.
/// The seed determines the events, but not the moments at which the servers react.
class Soak {
 public:
  Soak(AudioFlavour flavour, const std::string& program, std::uint64_t seed);

  /// Plays each kind of event once and then random ones until the time is over. Prints each fault
  /// to standard error when it is found.
  void run(std::chrono::seconds duration);

  /// Prints one line per kind of event with those that were wrong or undecided, one per figure of
  /// the process, and the total.
  void printSummary() const;

  int wrong() const;

 private:
  using Clock = std::chrono::steady_clock;

  struct Kind {
    const char* name;
    /// How often it is drawn, compared to the others.
    int weight;
    bool (Soak::*isPossible)() const;
    void (Soak::*play)();
    int count = 0;
    int wrong = 0;
    /// Those in which this machine was too busy, or unable, for the event to happen as intended.
    int undecided = 0;
  };
  /// A figure of the process that must stay in a range once the soak has warmed up.
  struct Figure {
    const char* name;
    long maxSpread;
    long (*of)(const ProcessFigures&);
    std::vector<long> samples{};
    int wrong = 0;
  };

  void play(Kind& kind);
  /// Waits until the desk shows what the model says, and checks that it stays so.
  void settle();
  bool shows(const SoakModel& model);
  void recover();
  void sampleFigures();
  void reportFault(const std::string& what, const std::string& why);

  long draw(long from, long to);
  Kind& drawKind();

  bool always() const { return true; }
  bool isPluggedIn() const { return model_.isPluggedIn(); }
  bool isAudible() const { return model_.isPluggedIn() && !model_.isSilent() && model_.level(); }
  bool isInCall() const { return model_.isInCall(); }
  bool isInCallAndAudible() const { return isInCall() && isAudible(); }

  void pressButton();
  void pressTwice();
  void bounce();
  /// What Hushbox shows after that drop if this machine was too busy for it to be seen, or to be
  /// seen as one that was restored in time.
  std::vector<SoakModel> modelsWhenBusy(const SoakDesk::Drop& drop) const;
  void clickInTeams();
  void changeLevel();
  void replug();
  void restartSoundServer();
  void hangUp();
  void freezeBrowser();
  void rest();
  void meter();
  void secondMeeting();
  void foreignPage();

  void plugIn(bool isRestored);
  void startCall();

  std::mt19937_64 random_;
  SoakDesk desk_;
  SoakModel model_;
  /// Whether the speakerphone's button moves its mute switch instead of its level.
  bool movesSwitch_ = false;
  bool isWarm_ = false;
  int played_ = 0;
  /// When a call started or the browser was thawed. Hushbox reads Teams some time later.
  Clock::time_point teamsReadable_{};
  /// Why the event being played cannot be judged; empty if it can.
  std::string undecidedBecause_;
  std::array<Kind, 13> kinds_;
  std::array<Figure, 4> figures_;
};

}  // namespace hushbox::rehearsal
