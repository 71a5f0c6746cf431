#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace hushbox {

/// A block that a main loop runs once, unless it is cancelled first.
///
/// It ends by running or by `cancel()`; letting go of the item does neither. Both release what the
/// block holds. Move-only; main thread.
class WorkItem {
 public:
  explicit WorkItem(std::function<void()> block)
      : block_(std::make_shared<std::function<void()>>(std::move(block))) {}

  WorkItem(WorkItem&&) = default;
  WorkItem& operator=(WorkItem&&) = default;
  WorkItem(const WorkItem&) = delete;
  WorkItem& operator=(const WorkItem&) = delete;

  /// Keeps the block from running. Without effect once it has run.
  void cancel() { *block_ = nullptr; }

  /// What a main loop calls when the time has come: runs the block the first time, then nothing.
  std::function<void()> invocation() const {
    return [block = block_] {
      if (auto run = std::exchange(*block, nullptr)) run();
    };
  }

 private:
  std::shared_ptr<std::function<void()>> block_;
};

}  // namespace hushbox
