#include "battery/BatteryMonitor.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/ChildProcess.h"
#include "platform/MainLoop.h"
#include "platform/Platform.h"
#include "support/Log.h"

namespace hushbox {
namespace {

/// Unused so far: a missing battery is not worth a log record.
[[maybe_unused]] constexpr Log log{"battery"};

constexpr TimeInterval pollInterval{60.0};
constexpr int maxRunningReadings = 2;

}  // namespace

std::shared_ptr<BatteryMonitor> BatteryMonitor::make(std::string nameMatch) {
  auto monitor = std::make_shared<BatteryMonitor>(Private{}, std::move(nameMatch));
  monitor->refresh({});
  monitor->timer_ = platform().mainLoop.scheduleRepeating(
      pollInterval, [weak = std::weak_ptr<BatteryMonitor>(monitor)] {
        if (const auto alive = weak.lock()) alive->refresh({});
      });
  return monitor;
}

BatteryMonitor::BatteryMonitor(Private, std::string nameMatch) : nameMatch_(std::move(nameMatch)) {}

void BatteryMonitor::refresh(std::function<void()> completion) {
  Completions completions;
  if (completion) completions.push_back(std::move(completion));
  if (runningReadings_ < maxRunningReadings) return startReading(std::move(completions));
  isReadingWaiting_ = true;
  std::move(completions.begin(), completions.end(), std::back_inserter(waitingCompletions_));
}

void BatteryMonitor::startReading(Completions completions) {
  ++runningReadings_;
  platform().mainLoop.utilityAsync([self = shared_from_this(), nameMatch = nameMatch_,
                                    completions = std::move(completions)]() mutable {
    const auto reading = read(nameMatch);
    const std::weak_ptr<BatteryMonitor> monitor = self;
    // Released before the hop, so that the hop does not keep an otherwise unused monitor alive.
    self.reset();
    platform().mainLoop.mainAsync([monitor, reading, completions = std::move(completions)] {
      if (const auto alive = monitor.lock()) alive->finishReading(reading, completions);
    });
  });
}

void BatteryMonitor::finishReading(const std::optional<BatteryReading>& reading,
                                   const Completions& completions) {
  --runningReadings_;
  publish(reading);
  for (const auto& completion : completions) completion();
  if (!isReadingWaiting_ || runningReadings_ == maxRunningReadings) return;
  isReadingWaiting_ = false;
  startReading(std::exchange(waitingCompletions_, {}));
}

void BatteryMonitor::publish(const std::optional<BatteryReading>& reading) {
  level_ = reading ? std::optional(reading->level) : std::nullopt;
  isCharging_ = reading && reading->charging;
}

std::optional<BatteryReading> BatteryMonitor::read(const std::string& nameMatch) {
  const auto tool = platform().childProcesses.make();
  tool->setExecutablePath("/usr/bin/pmset");
  tool->setArguments({"-g", "accps"});
  if (!tool->launch()) return std::nullopt;
  // Read before waiting: a child that writes more than the pipe holds exits only once it is read.
  const std::string output = tool->readDataToEndOfFile();
  tool->waitUntilExit();
  return parseBatteryReading(output, nameMatch);
}

}  // namespace hushbox
