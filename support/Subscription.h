#pragma once

#include <memory>
#include <utility>

namespace hushbox {

/// Keeps a subscriber subscribed; letting go of it ends the subscription at once. It may outlive
/// what it subscribes to. Move-only; main thread.
class Subscription {
 public:
  Subscription() = default;
  /// `token` ends the subscription when it is destroyed.
  explicit Subscription(std::unique_ptr<void, void (*)(void*)> token) : token_(std::move(token)) {}

  explicit operator bool() const { return token_ != nullptr; }

 private:
  std::unique_ptr<void, void (*)(void*)> token_{nullptr, [](void*) {}};
};

}  // namespace hushbox
