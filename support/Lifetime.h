#pragma once

#include <memory>
#include <utility>

namespace hushbox {

/// Stands for how long its owner lives, so that a callback can hold the owner weakly.
///
/// Declare it last in the owner: it then ends before any other member does. Owner, callbacks and
/// this stay on one thread.
class Lifetime {
 public:
  Lifetime() : alive_(std::make_shared<char>()) {}
  Lifetime(const Lifetime&) = delete;
  Lifetime& operator=(const Lifetime&) = delete;

  /// `callback`, which does nothing once the owner is gone. It takes any arguments and returns
  /// nothing.
  template <typename Callback>
  auto weakly(Callback callback) const {
    return
        [owner = std::weak_ptr<char>(alive_), callback = std::move(callback)](auto&&... arguments) {
          if (!owner.expired()) callback(std::forward<decltype(arguments)>(arguments)...);
        };
  }

 private:
  std::shared_ptr<char> alive_;
};

}  // namespace hushbox
