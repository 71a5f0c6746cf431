#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/linux/audio/AudioProperty.h"

namespace hushbox {

/// Keeps the registered property listeners and calls them. Main thread only.
///
/// A listener may add and remove listeners, itself included, and may destroy this object. A
/// listener that is removed before its turn is not called; one that is added during a call waits
/// for the next change.
class PropertyListeners {
 public:
  PropertyListeners() = default;
  ~PropertyListeners();
  PropertyListeners(const PropertyListeners&) = delete;
  PropertyListeners& operator=(const PropertyListeners&) = delete;

  RegistrationToken add(const AudioProperty& property, std::function<void()> block);

  /// Returns false if the registration does not belong to this property.
  bool remove(const AudioProperty& property, const RegistrationToken& registration);

  /// Whether the property has a listener.
  bool has(const AudioProperty& property) const;

  /// Removes the listeners of objects that no longer exist.
  void removeUnless(const std::function<bool(AudioObjectID)>& exists);

  /// Calls each listener of the changed properties once, in the order of the changes. A listener
  /// may destroy this object; the call then stops there.
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
