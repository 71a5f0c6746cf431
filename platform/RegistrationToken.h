#pragma once

#include <memory>
#include <utility>

namespace hushbox {

/// Identifies a repeating timer or a property listener that was added to the platform.
///
/// Destroying it cancels nothing: the timer keeps firing and the listener keeps being called, so
/// their blocks must hold their owner weakly. A listener is removed by passing its token to
/// `AudioHardware::removePropertyListener`; a timer runs until the process exits. Move-only; main
/// thread.
class RegistrationToken {
 public:
  RegistrationToken() = default;
  /// `native` is the adapter's record of the timer or listener, compared by identity on removal.
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
