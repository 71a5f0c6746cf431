#import "platform/macos/CoreAudioHardware.h"

#import <CoreAudio/CoreAudio.h>
#import <Foundation/Foundation.h>

#include <utility>

#import "platform/macos/CFReference.h"
#import "platform/macos/StringConversion.h"

namespace hushbox {
namespace {

AudioObjectPropertyAddress native(const AudioPropertyAddress& address) {
  return {address.selector, address.scope, address.element};
}

/// The block as Core Audio received it: removal requires the identical block.
struct PropertyListener {
  AudioObjectPropertyListenerBlock block;
};

AudioObjectPropertyListenerBlock blockCalling(std::function<void()> listener) {
  const auto held = std::make_shared<const std::function<void()>>(std::move(listener));
  return ^(UInt32, const AudioObjectPropertyAddress*) {
    // A listener may remove itself, which destroys this block: keep the function alive.
    const auto called = held;
    @autoreleasepool {
      (*called)();
    }
  };
}

}  // namespace

bool CoreAudioHardware::hasProperty(AudioObjectID object, const AudioPropertyAddress& address) {
  const auto property = native(address);
  return AudioObjectHasProperty(object, &property);
}

AudioStatus CoreAudioHardware::getPropertyDataSize(AudioObjectID object,
                                                   const AudioPropertyAddress& address,
                                                   std::uint32_t& size) {
  const auto property = native(address);
  return AudioObjectGetPropertyDataSize(object, &property, 0, nullptr, &size);
}

AudioStatus CoreAudioHardware::getPropertyData(AudioObjectID object,
                                               const AudioPropertyAddress& address,
                                               std::uint32_t& size, void* data) {
  const auto property = native(address);
  // An empty list may have a null pointer, which Core Audio rejects.
  char nothing = 0;
  return AudioObjectGetPropertyData(object, &property, 0, nullptr, &size, data ? data : &nothing);
}

AudioStatus CoreAudioHardware::getPropertyText(AudioObjectID object,
                                               const AudioPropertyAddress& address,
                                               std::string& text) {
  const auto property = native(address);
  CFTypeRef value = nullptr;
  UInt32 size = sizeof value;
  const OSStatus status = AudioObjectGetPropertyData(object, &property, 0, nullptr, &size, &value);
  if (status != kAudioHardwareNoError) return status;
  if (size != sizeof value) return audio::badPropertySize;
  const auto owned = CFReference<CFTypeRef>::adopting(value);
  if (!owned || CFGetTypeID(value) != CFStringGetTypeID()) return audio::unknownProperty;
  text = utf8FromString((__bridge NSString*)static_cast<CFStringRef>(value));
  return audio::noError;
}

AudioStatus CoreAudioHardware::setPropertyData(AudioObjectID object,
                                               const AudioPropertyAddress& address,
                                               std::uint32_t size, const void* data) {
  const auto property = native(address);
  return AudioObjectSetPropertyData(object, &property, 0, nullptr, size, data);
}

RegistrationToken CoreAudioHardware::addPropertyListener(AudioObjectID object,
                                                         const AudioPropertyAddress& address,
                                                         std::function<void()> listener) {
  const auto property = native(address);
  auto added = std::make_shared<PropertyListener>();
  added->block = blockCalling(std::move(listener));
  if (AudioObjectAddPropertyListenerBlock(object, &property, dispatch_get_main_queue(),
                                          added->block) != kAudioHardwareNoError) {
    return {};
  }
  return RegistrationToken(std::move(added));
}

AudioStatus CoreAudioHardware::removePropertyListener(AudioObjectID object,
                                                      const AudioPropertyAddress& address,
                                                      RegistrationToken listener) {
  if (!listener) return audio::unsupportedOperation;
  const auto property = native(address);
  const auto& added = *static_cast<const PropertyListener*>(listener.native().get());
  return AudioObjectRemovePropertyListenerBlock(object, &property, dispatch_get_main_queue(),
                                                added.block);
}

}  // namespace hushbox
