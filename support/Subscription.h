#pragma once

#include <memory>
#include <utility>

namespace hushbox {

/// Keeps a subscriber subscribed; destroying it ends the subscription at once. It may outlive the
/// publisher. Move-only; main thread.
class Subscription {
 public:
  Subscription() = default;
  /// Destroying `token` must end the subscription.
  explicit Subscription(std::unique_ptr<void, void (*)(void*)> token) : token_(std::move(token)) {}

  explicit operator bool() const { return token_ != nullptr; }

 private:
  std::unique_ptr<void, void (*)(void*)> token_{nullptr, [](void*) {}};
};

}  // namespace hushbox
