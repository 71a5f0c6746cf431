#include "rehearsal/soak/Soak.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <limits>
#include <optional>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

/// Longer than Hushbox's pause after a failed look for Teams, and what a busy machine may add.
constexpr Milliseconds reactionTimeout{20'000};
/// Longer than the half second in which Hushbox takes a change for the echo of its own.
constexpr Milliseconds echoWindow{700};
/// Longer than the time between two polls.
constexpr Milliseconds pollAndMore{1'500};
/// Longer than Hushbox's pause after a failed poll and the next poll.
constexpr Milliseconds firstReadTimeout{7'500};
/// How long a battery reading may take on a busy machine, and usually takes.
constexpr Milliseconds readingTimeout{15'000};
constexpr Milliseconds readingTime{500};
constexpr std::chrono::seconds warmUp{60};
/// A drop that Hushbox sees last longer than this counts as a mute.
constexpr Milliseconds bounceWindow{300};

std::string milliseconds(std::chrono::nanoseconds span) {
  return std::to_string(std::chrono::duration_cast<Milliseconds>(span).count()) + " ms";
}

}  // namespace

Soak::Soak(AudioFlavour flavour, const std::string& program, std::uint64_t seed)
    : random_(seed),
      desk_(flavour, program),
      kinds_{{{"press", 30, &Soak::isPluggedIn, &Soak::pressButton},
              {"two presses", 10, &Soak::isPluggedIn, &Soak::pressTwice},
              {"bounce", 20, &Soak::isAudible, &Soak::bounce},
              {"click in Teams", 20, &Soak::isPluggedIn, &Soak::clickInTeams},
              {"change of level", 5, &Soak::isAudible, &Soak::changeLevel},
              {"replug", 6, &Soak::isPluggedIn, &Soak::replug},
              {"sound server restart", 3, &Soak::isPluggedIn, &Soak::restartSoundServer},
              {"hanging up", 4, &Soak::isInCall, &Soak::hangUp},
              {"frozen browser", 3, &Soak::isInCall, &Soak::freezeBrowser},
              {"resting page", 5, &Soak::always, &Soak::rest},
              {"level meter", 4, &Soak::isPluggedIn, &Soak::meter},
              {"second meeting page", 4, &Soak::isInCall, &Soak::secondMeeting},
              {"foreign page", 4, &Soak::isInCall, &Soak::foreignPage}}},
      figures_{{{"written memory (KiB)", 64,
                 [](const ProcessFigures& now) { return now.writtenKibibytes; }},
                // Only reported: pages of a library count while no other program maps them.
                {"private memory (KiB)", std::numeric_limits<long>::max(),
                 [](const ProcessFigures& now) { return now.privateKibibytes; }},
                // One more from when the other browser shows Teams for the first time: a connection
                // directly to it.
                {"descriptors", 1,
                 [](const ProcessFigures& now) { return static_cast<long>(now.descriptors); }},
                {"threads", 0,
                 [](const ProcessFigures& now) { return static_cast<long>(now.threads); }}}} {
  plugIn(false);
  startCall();
}

void Soak::run(std::chrono::seconds duration) {
  const auto start = Clock::now();
  settle();
  for (Kind& kind : kinds_) {
    if ((this->*kind.isPossible)()) play(kind);
  }
  while (Clock::now() - start < duration) {
    play(drawKind());
    isWarm_ = isWarm_ || Clock::now() - start >= warmUp;
    if (isWarm_) sampleFigures();
  }
}

void Soak::play(Kind& kind) {
  ++kind.count;
  ++played_;
  undecidedBecause_.clear();
  try {
    (this->*kind.play)();
    settle();
    if (undecidedBecause_.empty()) return;
    ++kind.undecided;
    std::fprintf(stderr, "event %d, %s: undecided, %s\n", played_, kind.name,
                 undecidedBecause_.c_str());
  } catch (const std::exception& error) {
    ++kind.wrong;
    reportFault(kind.name, error.what());
    recover();
  }
}

void Soak::settle() {
  SoakState seen;
  const auto isReached = [&] {
    seen = desk_.see();
    return seen.fits(model_.expected());
  };
  const bool reached = holdsWithin(isReached, reactionTimeout);
  if (reached) letPass(Milliseconds{draw(echoWindow.count(), pollAndMore.count())});
  if (reached && isReached()) return;
  throw DeskError((reached ? "afterwards: " : "") + seen.describe() +
                  "\n  instead of: " + model_.expected().describe());
}

bool Soak::shows(const SoakModel& model) {
  return desk_.see().fits(model.expected());
}

void Soak::recover() {
  try {
    letPass(2 * pollAndMore);
    model_.adopt(desk_.see());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "  and then: %s\n", error.what());
  }
}

void Soak::sampleFigures() {
  for (Figure& figure : figures_) {
    long value = 0;
    const auto isInRange = [&] {
      value = figure.of(desk_.figures());
      // Not in the middle of a battery reading, which takes a child process and a thread.
      if (figure.samples.empty()) letPass(readingTime);
      if (figure.samples.empty()) return figure.of(desk_.figures()) == value;
      const auto [least, most] = std::ranges::minmax(figure.samples);
      // What has been reported once is not reported again.
      if (least <= value && value <= most) return true;
      return std::max(most, value) - std::min(least, value) <= figure.maxSpread;
    };
    if (!holdsWithin(isInRange, readingTimeout)) {
      ++figure.wrong;
      reportFault(figure.name, std::to_string(value));
    }
    figure.samples.push_back(value);
  }
}

void Soak::reportFault(const std::string& what, const std::string& why) {
  const std::string log = desk_.log();
  std::string load;
  std::getline(std::ifstream("/proc/loadavg"), load);
  std::fprintf(stderr,
               "event %d, %s: %s\n  with the page %s, the machine's load %s\n"
               "  Hushbox's log ends with:\n%s\n",
               played_, what.c_str(), why.c_str(), desk_.isMinimised() ? "minimised" : "shown",
               load.c_str(),
               log.substr(log.size() - std::min<std::size_t>(log.size(), 1500)).c_str());
}

int Soak::wrong() const {
  int sum = 0;
  for (const Kind& kind : kinds_) sum += kind.wrong;
  for (const Figure& figure : figures_) sum += figure.wrong;
  return sum;
}

void Soak::printSummary() const {
  for (const Kind& kind : kinds_) {
    std::printf("%-22s %5d, %d wrong", kind.name, kind.count, kind.wrong);
    if (kind.undecided != 0) std::printf(", %d undecided", kind.undecided);
    std::printf("\n");
  }
  for (const Figure& figure : figures_) {
    if (figure.samples.empty()) continue;
    const auto [least, most] = std::ranges::minmax(figure.samples);
    std::printf("%-22s %5zu, %d wrong: %ld to %ld\n", figure.name, figure.samples.size(),
                figure.wrong, least, most);
  }
  std::printf("total: %d events, %d wrong\n", played_, wrong());
}

long Soak::draw(long from, long to) {
  return from + static_cast<long>(random_() % static_cast<std::uint64_t>(to - from + 1));
}

Soak::Kind& Soak::drawKind() {
  const auto weightOf = [this](const Kind& kind) {
    return (this->*kind.isPossible)() ? kind.weight : 0;
  };
  long sum = 0;
  for (const Kind& kind : kinds_) sum += weightOf(kind);
  long left = draw(0, sum - 1);
  for (Kind& kind : kinds_) {
    left -= weightOf(kind);
    if (left < 0) return kind;
  }
  return kinds_.back();
}

void Soak::pressButton() {
  desk_.pressButton(movesSwitch_, model_.level().value_or(100));
  if (!model_.level() && !movesSwitch_) model_.setLevel(100);
  model_.pressButton();
}

void Soak::pressTwice() {
  pressButton();
  // Beyond the bounce window, so that these are two presses.
  letPass(Milliseconds{draw(500, 1200)});
  pressButton();
}

void Soak::bounce() {
  // Before Hushbox has read Teams, it makes the speakerphone follow a toggle.
  while (Clock::now() - teamsReadable_ < firstReadTimeout) letPass(Milliseconds{100});
  const SoakDesk::Drop drop = desk_.bounce(*model_.level(), Milliseconds{draw(1, 200)});
  const std::vector<SoakModel> whenBusy = modelsWhenBusy(drop);
  model_.bounce();
  if (whenBusy.empty() || holdsWithin([&] { return shows(model_); }, reactionTimeout)) return;
  for (const SoakModel& model : whenBusy) {
    if (!shows(model)) continue;
    model_ = model;
    undecidedBecause_ = "within " + milliseconds(drop.maxSpan) + " a thread waited " +
                        milliseconds(drop.waited) + " for a processor";
    return;
  }
}

std::vector<SoakModel> Soak::modelsWhenBusy(const SoakDesk::Drop& drop) const {
  std::vector<SoakModel> models;
  if (drop.waited > drop.maxSpan / 4) models.push_back(model_);
  if (drop.waited + drop.maxSpan > bounceWindow) {
    models.push_back(model_);
    models.back().pressButton();
    models.back().pressButton();
  }
  return models;
}

void Soak::clickInTeams() {
  desk_.clickInTeams();
  model_.clickInTeams();
}

void Soak::changeLevel() {
  const long level = draw(10, 150);
  desk_.setLevel(level);
  model_.setLevel(level);
}

void Soak::plugIn(bool isRestored) {
  if (!isRestored) movesSwitch_ = draw(0, 1) == 1;
  desk_.plugIn(isRestored);
  letPass(pollAndMore);
  // What a session manager restores depends on its version.
  const SoakState seen = desk_.see();
  model_.plugIn(seen.isSilent, seen.level);
}

void Soak::startCall() {
  desk_.startCall();
  model_.startCall();
  teamsReadable_ = Clock::now();
}

void Soak::replug() {
  desk_.unplug();
  model_.unplug();
  settle();
  letPass(pollAndMore);
  plugIn(draw(0, 1) == 1);
  startCall();
}

void Soak::restartSoundServer() {
  desk_.killSoundServer();
  model_.unplug();
  settle();
  letPass(pollAndMore);
  desk_.startSoundServer();
  model_.plugIn(false, 100);
  settle();
  startCall();
}

void Soak::hangUp() {
  desk_.endCall();
  model_.endCall();
  settle();
  letPass(pollAndMore);
  if (draw(0, 1) == 1) pressButton();
  if (draw(0, 1) == 1) {
    settle();
    clickInTeams();
  }
  settle();
  startCall();
}

void Soak::freezeBrowser() {
  desk_.freezeBrowser();
  if (draw(0, 1) == 1) {
    desk_.pressButton(movesSwitch_, model_.level().value_or(100));
    model_.pressButtonWhileFrozen();
  }
  // Until a poll has failed too.
  letPass(Milliseconds{draw(3500, 5000)});
  desk_.thawBrowser();
  model_.thaw();
  teamsReadable_ = Clock::now();
}

void Soak::rest() {
  desk_.setMinimised(!desk_.isMinimised());
}

void Soak::meter() {
  desk_.setMeter(!desk_.hasMeter());
}

void Soak::secondMeeting() {
  const bool wasMinimised = desk_.isMinimised();
  if (!desk_.openSecondMeeting()) {
    undecidedBecause_ = "the browser does not record";
    return;
  }
  letPass(Milliseconds{draw(0, 2000)});
  pressButton();
  settle();
  desk_.closeSecondMeeting();
  desk_.setMinimised(wasMinimised);
}

void Soak::foreignPage() {
  desk_.openForeignPage();
  letPass(Milliseconds{draw(0, 2000)});
  pressButton();
  settle();
  desk_.closeForeignPage();
}

}  // namespace hushbox::rehearsal
