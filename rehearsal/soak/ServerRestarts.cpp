#include "rehearsal/soak/ServerRestarts.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <utility>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

using Clock = std::chrono::steady_clock;

/// How long Hushbox may take to be back, at the 99th percentile.
constexpr Milliseconds maxRecoveryTime{1000};
/// A line that the server is missing and one that it is back.
constexpr long maxRecords = 2;
/// In KiB. The end of the heap moves by up to 92 with what happens to lie there; 1 KiB lost per
/// restart would be 200.
constexpr long maxMemorySpread = 128;
/// Longer than the bounce window, so that an invented press would show.
constexpr Milliseconds bounceWindow{400};
/// How long a battery reading may take on a busy machine; it takes a child process and a thread.
constexpr Milliseconds readingTimeout{15'000};

long recordsIn(const std::string& log) {
  return std::ranges::count(log, '\n');
}

/// The smallest and the largest value of a figure.
template <typename Of>
std::pair<long, long> rangeOf(const std::vector<ProcessFigures>& figures, Of of) {
  long least = of(figures.front());
  long most = least;
  for (const ProcessFigures& one : figures) {
    least = std::min<long>(least, of(one));
    most = std::max<long>(most, of(one));
  }
  return {least, most};
}

Milliseconds percentile(std::vector<Milliseconds> times, std::size_t percent) {
  std::ranges::sort(times);
  return times.at((times.size() - 1) * percent / 100);
}

long memoryOf(const ProcessFigures& figures) {
  return figures.writtenKibibytes;
}
long descriptorsOf(const ProcessFigures& figures) {
  return static_cast<long>(figures.descriptors);
}
long threadsOf(const ProcessFigures& figures) {
  return static_cast<long>(figures.threads);
}

}  // namespace

ServerRestarts::ServerRestarts(AudioFlavour flavour, const std::string& program)
    : desk_({.display = true, .audio = flavour, .speakerphone = true, .applyToThisProcess = false}),
      meeting_(desk_.browser()),
      panel_(std::in_place, desk_.session()),
      hushbox_(desk_.session(), program) {
  hushbox_.waitForLog("Attached to");
  panel_->waitForItem();
  checkPress();
}

void ServerRestarts::restartSoundServer(int count) {
  AudioServer& sound = desk_.audio();
  const char* flavour = sound.flavour() == AudioFlavour::PipeWire ? "PipeWire" : "PulseAudio";
  std::size_t logged = 0;
  restart({flavour,
           [&] {
             logged = hushbox_.log().size();
             sound.kill();
           },
           [&] { sound.restart(); },
           [&] { return hushbox_.log().find("Attached to", logged) != std::string::npos; }},
          count);
}

void ServerRestarts::restartPanel(int count) {
  restart({"panel", [&] { panel_.reset(); }, [&] { panel_.emplace(desk_.session()); },
           [&] { return panel_->items().size() == 1; }},
          count);
}

void ServerRestarts::restart(const Server& server, int count) {
  const auto start = Clock::now();
  const int before = failures_;
  times_.clear();
  records_.clear();
  figures_.clear();
  for (int outage = 0; outage < count; ++outage) {
    try {
      playOutage(server, outage);
      if (outage >= warmUp) sampleFigures();
    } catch (const std::exception& error) {
      reportFault(server.name + ", outage " + std::to_string(outage) + ": " + error.what());
    }
  }
  try {
    checkPress();
  } catch (const std::exception& error) {
    reportFault(server.name + ": " + error.what());
  }
  if (times_.empty() || figures_.empty()) return reportFault(server.name + ": too few outages");
  if (percentile(times_, 99) > maxRecoveryTime) reportFault(server.name + ": recovers too slowly");
  const auto memory = rangeOf(figures_, memoryOf);
  const auto descriptors = rangeOf(figures_, descriptorsOf);
  const auto threads = rangeOf(figures_, threadsOf);
  const std::chrono::duration<double> time = Clock::now() - start;
  std::printf(
      "servers: %s killed and restarted %d times, back after %lld ms at the median and %lld ms at "
      "the 99th percentile, at most %ld log lines each, written memory %ld to %ld KiB, "
      "descriptors %ld to %ld, threads %ld to %ld, %.0f s, %d failures\n",
      server.name.c_str(), count, static_cast<long long>(percentile(times_, 50).count()),
      static_cast<long long>(percentile(times_, 99).count()), *std::ranges::max_element(records_),
      memory.first, memory.second, descriptors.first, descriptors.second, threads.first,
      threads.second, time.count(), failures_ - before);
  std::fflush(stdout);
}

void ServerRestarts::playOutage(const Server& server, int outage) {
  const std::size_t logged = hushbox_.log().size();
  server.kill();
  // As a supervisor does.
  letPass(Milliseconds{outage % 4 * 100});
  server.start();
  const auto started = Clock::now();
  waitUntil(server.isBack, serverTimeout, "the recovery");
  times_.push_back(std::chrono::ceil<Milliseconds>(Clock::now() - started));
  letPass(bounceWindow);
  const std::string log = hushbox_.log().substr(logged);
  records_.push_back(recordsIn(log));
  if (records_.back() > maxRecords) throw DeskError("logged too much:\n" + log);
  if (meeting_.presses().size() != expectedPresses_)
    throw DeskError("a press was invented:\n" + log);
}

void ServerRestarts::sampleFigures() {
  const auto isInRange = [&] {
    const ProcessFigures now = ProcessFigures::of(hushbox_.pid());
    // The allocator gives memory back once: what counts is that it does not grow after that.
    std::erase_if(figures_, [&](const ProcessFigures& earlier) {
      return memoryOf(earlier) > memoryOf(now) + maxMemorySpread;
    });
    figures_.push_back(now);
    const auto memory = rangeOf(figures_, memoryOf);
    const auto descriptors = rangeOf(figures_, descriptorsOf);
    const auto threads = rangeOf(figures_, threadsOf);
    const bool isFlat = memory.second - memory.first <= maxMemorySpread &&
                        descriptors.first == descriptors.second && threads.first == threads.second;
    if (!isFlat) figures_.pop_back();
    return isFlat;
  };
  const auto isSettled = [&] {
    const ProcessFigures first = ProcessFigures::of(hushbox_.pid());
    letPass(bounceWindow);
    const ProcessFigures second = ProcessFigures::of(hushbox_.pid());
    return first.descriptors == second.descriptors && first.threads == second.threads;
  };
  // The first sample must not be taken during a battery reading.
  if (figures_.empty()) waitUntil(isSettled, readingTimeout, "the end of a battery reading");
  if (holdsWithin(isInRange, readingTimeout)) return;
  const ProcessFigures now = ProcessFigures::of(hushbox_.pid());
  throw DeskError("holds more or less than before: " + std::to_string(memoryOf(now)) + " KiB, " +
                  std::to_string(now.descriptors) + " descriptors, " + std::to_string(now.threads) +
                  " threads");
}

void ServerRestarts::checkPress() {
  desk_.audio().setVolume(0.0);
  meeting_.waitForMuted(true);
  desk_.audio().setVolume(1.0);
  meeting_.waitForMuted(false);
  expectedPresses_ += 2;
  // Until Hushbox has logged them, too.
  letPass(bounceWindow);
  if (meeting_.presses().size() != expectedPresses_)
    throw DeskError("a press was lost or invented");
}

void ServerRestarts::reportFault(const std::string& what) {
  ++failures_;
  std::fprintf(stderr, "servers: FAILED: %s\n", what.c_str());
  // Go on from what there is now.
  expectedPresses_ = meeting_.presses().size();
}

}  // namespace hushbox::rehearsal
