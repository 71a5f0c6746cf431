#pragma once

#include <memory>
#include <utility>

namespace hushbox {

/// What the platform has been asked to keep in place: a repeating timer or a property listener.
///
/// Letting go of it takes nothing away: the timer goes on firing and the listener goes on being
/// called, and its block has to find its owner gone by itself. A listener ends only by being handed
/// back to the platform that made it; a timer ends with the process. Move-only; main thread.
class RegistrationToken {
 public:
  RegistrationToken() = default;
  /// `native` is the platform's own record of it, compared by identity on removal.
  explicit RegistrationToken(std::shared_ptr<void> native) : native_(std::move(native)) {}

  RegistrationToken(RegistrationToken&&) = default;
  RegistrationToken& operator=(RegistrationToken&&) = default;
  RegistrationToken(const RegistrationToken&) = delete;
  RegistrationToken& operator=(const RegistrationToken&) = delete;

  explicit operator bool() const { return native_ != nullptr; }
  const std::shared_ptr<void>& native() const { return native_; }

 private:
  std::shared_ptr<void> native_;
};

}  // namespace hushbox
