#pragma once

#include <memory>
#include <utility>

namespace hushbox {

/// A member that lets callbacks hold its owner weakly.
///
/// Declare it as the owner's last member, so that it is destroyed before the others. The owner, the
/// callbacks and this object must be used on the same thread.
class Lifetime {
 public:
  Lifetime() : alive_(std::make_shared<char>()) {}
  Lifetime(const Lifetime&) = delete;
  Lifetime& operator=(const Lifetime&) = delete;

  /// Returns a function that calls `callback` while the owner lives and does nothing afterwards. It
  /// takes any arguments and returns nothing.
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
