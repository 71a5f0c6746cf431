#include "platform/linux/audio/PropertyListeners.h"

#include <algorithm>
#include <utility>

namespace hushbox {

PropertyListeners::~PropertyListeners() {
  removeIf([](const auto&) { return true; });
}

RegistrationToken PropertyListeners::add(const AudioProperty& property,
                                         std::function<void()> block) {
  auto listener = std::make_shared<Listener>(Listener{property, std::move(block)});
  listeners_.push_back(listener);
  return RegistrationToken(std::move(listener));
}

bool PropertyListeners::remove(const AudioProperty& property,
                               const RegistrationToken& registration) {
  return removeIf([&](const auto& listener) {
           return listener->property == property && listener == registration.native();
         }) != 0;
}

bool PropertyListeners::has(const AudioProperty& property) const {
  return std::ranges::any_of(listeners_,
                             [&](const auto& listener) { return listener->property == property; });
}

void PropertyListeners::removeUnless(const std::function<bool(AudioObjectID)>& exists) {
  removeIf([&](const auto& listener) { return !exists(listener->property.object); });
}

void PropertyListeners::call(const std::vector<AudioProperty>& changes) {
  std::vector<std::shared_ptr<Listener>> due;
  for (const AudioProperty& change : changes) {
    for (const auto& listener : listeners_) {
      if (listener->property == change && std::ranges::find(due, listener) == due.end()) {
        due.push_back(listener);
      }
    }
  }
  // Don't touch `this` below; a listener may have destroyed it.
  for (const auto& listener : due) {
    if (!listener->removed) listener->block();
  }
}

template <typename Predicate>
std::size_t PropertyListeners::removeIf(Predicate predicate) {
  // Keeps the blocks alive until the list is consistent again: destroying one may call back into
  // this object.
  std::vector<std::shared_ptr<Listener>> removed;
  std::erase_if(listeners_, [&](const auto& listener) {
    if (!predicate(listener)) return false;
    listener->removed = true;
    removed.push_back(listener);
    return true;
  });
  return removed.size();
}

}  // namespace hushbox
