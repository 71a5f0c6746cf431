#include "battery/BatteryMonitor.h"

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
  platform().mainLoop.utilityAsync([self = shared_from_this(), nameMatch = nameMatch_,
                                    completion = std::move(completion)]() mutable {
    const auto reading = read(nameMatch);
    const std::weak_ptr<BatteryMonitor> monitor = self;
    // Released before the hop, so that the hop does not keep an otherwise unused monitor alive.
    self.reset();
    platform().mainLoop.mainAsync([monitor, reading, completion = std::move(completion)] {
      const auto alive = monitor.lock();
      if (!alive) return;
      alive->publish(reading);
      if (completion) completion();
    });
  });
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
