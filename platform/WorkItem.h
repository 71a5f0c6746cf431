#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace hushbox {

/// A block that a main loop runs once, unless it is cancelled first. Running and `cancel()` both
/// release what the block holds; destroying the item does neither. Move-only; main thread.
class WorkItem {
 public:
  explicit WorkItem(std::function<void()> block)
      : block_(std::make_shared<std::function<void()>>(std::move(block))) {}

  WorkItem(WorkItem&&) = default;
  WorkItem& operator=(WorkItem&&) = default;
  WorkItem(const WorkItem&) = delete;
  WorkItem& operator=(const WorkItem&) = delete;

  /// Prevents the block from running. Has no effect once it has run.
  void cancel() { *block_ = nullptr; }

  /// Returns the function for a main loop to call when the item is due. It runs the block the first
  /// time and then does nothing.
  std::function<void()> invocation() const {
    return [block = block_] {
      if (auto run = std::exchange(*block, nullptr)) run();
    };
  }

 private:
  std::shared_ptr<std::function<void()>> block_;
};

}  // namespace hushbox
