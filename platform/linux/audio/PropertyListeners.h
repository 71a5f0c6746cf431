#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/linux/audio/AudioProperty.h"

namespace hushbox {

/// The listeners that are in place, and the calling of them. Main thread only.
///
/// A listener may add and remove listeners, itself too, and may end the owner of them all: one that
/// is removed before its turn is not called, and one that is added meanwhile waits for the next
/// change.
class PropertyListeners {
 public:
  PropertyListeners() = default;
  ~PropertyListeners();
  PropertyListeners(const PropertyListeners&) = delete;
  PropertyListeners& operator=(const PropertyListeners&) = delete;

  RegistrationToken add(const AudioProperty& property, std::function<void()> block);

  /// False when the registration is not one of this property's.
  bool remove(const AudioProperty& property, const RegistrationToken& registration);

  /// Takes away whatever listens to objects that are gone.
  void removeUnless(const std::function<bool(AudioObjectID)>& exists);

  /// Calls each listener of the changed properties once, in the order of the changes.
  void call(const std::vector<AudioProperty>& changes);

 private:
  struct Listener {
    AudioProperty property;
    std::function<void()> block;
    bool removed = false;
  };

  template <typename Predicate>
  std::size_t removeIf(Predicate predicate);

  std::vector<std::shared_ptr<Listener>> listeners_;
};

}  // namespace hushbox
