#include "tests/platform/macos/doubles/CoreAudioDouble.h"

#import <CoreAudio/CoreAudio.h>
#import <Foundation/Foundation.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "tests/platform/macos/doubles/Calls.h"
#import "tests/platform/macos/doubles/FoundationValues.h"

using namespace hushbox::doubles;

namespace {

using Address = AudioObjectPropertyAddress;

struct Listener {
  AudioObjectID object;
  Address address;
  dispatch_queue_t queue;
  AudioObjectPropertyListenerBlock block;
};

constexpr Address listProperty{kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal, 0};
constexpr Address nameProperty{kAudioObjectPropertyName, kAudioObjectPropertyScopeGlobal, 0};
constexpr Address volumeProperty{kAudioDevicePropertyVolumeScalar, kAudioObjectPropertyScopeInput,
                                 0};
constexpr Address runningProperty{kAudioDevicePropertyDeviceIsRunningSomewhere,
                                  kAudioObjectPropertyScopeGlobal, 0};
constexpr UInt32 firstObject = 40;

std::vector<std::pair<UInt32, AudioDevice>> devices;
std::vector<Listener> listeners;
UInt32 nextObject = firstObject;
OSStatus nextStatus = kAudioHardwareNoError;
bool lateCalls = false;

bool same(const Address& a, const Address& b) {
  return a.mSelector == b.mSelector && a.mScope == b.mScope && a.mElement == b.mElement;
}

AudioDevice* find(UInt32 object) {
  for (auto& [id, device] : devices) {
    if (id == object) return &device;
  }
  return nullptr;
}

bool isAdded(AudioObjectPropertyListenerBlock block) {
  return std::any_of(listeners.begin(), listeners.end(), [&](const Listener& added) {
    return (__bridge void*)added.block == (__bridge void*)block;
  });
}

void call(const Listener& listener) {
  __block AudioObjectPropertyListenerBlock queued = listener.block;
  const Address address = listener.address;
  dispatch_async(listener.queue, ^{
    // While it runs, only its registration holds a listener: one that removes itself is destroyed.
    __unsafe_unretained AudioObjectPropertyListenerBlock block = queued;
    if (isAdded(block)) queued = nil;
    block(1, &address);
    queued = nil;
  });
}

void announce(UInt32 object, const Address& address) {
  for (const Listener& listener : listeners) {
    if (listener.object == object && same(listener.address, address)) call(listener);
  }
}

OSStatus check(UInt32 object, const Address* address) {
  if (!address) fail("Core Audio was given no property address");
  if (nextStatus != kAudioHardwareNoError) return std::exchange(nextStatus, 0);
  if (object == kAudioObjectSystemObject) {
    return same(*address, listProperty) ? kAudioHardwareNoError
                                        : kAudioHardwareUnknownPropertyError;
  }
  const AudioDevice* device = find(object);
  if (!device) return kAudioHardwareBadObjectError;
  if (same(*address, nameProperty) || same(*address, runningProperty)) return kAudioHardwareNoError;
  return same(*address, volumeProperty) && device->inputVolume ? kAudioHardwareNoError
                                                               : kAudioHardwareUnknownPropertyError;
}

UInt32 sizeOf(const Address& address) {
  if (same(address, listProperty)) {
    return static_cast<UInt32>(devices.size() * sizeof(AudioObjectID));
  }
  return same(address, nameProperty) ? sizeof(CFStringRef) : sizeof(UInt32);
}

void requireNoQualifier(UInt32 size, const void* data) {
  if (size != 0 || data) fail("Core Audio was given an unexpected qualifier");
}

/// Returns as many devices as fit.
void copyList(UInt32* size, void* out) {
  const auto count =
      std::min<UInt32>(*size / sizeof(AudioObjectID), static_cast<UInt32>(devices.size()));
  for (UInt32 i = 0; i < count; ++i) {
    std::memcpy(static_cast<char*>(out) + i * sizeof(AudioObjectID), &devices[i].first,
                sizeof(AudioObjectID));
  }
  *size = count * static_cast<UInt32>(sizeof(AudioObjectID));
}

/// Returns a reference that the caller must release.
void* copiedName(const AudioDevice& device) {
  switch (device.kind) {
    case AudioDevice::Name::text:
      return (__bridge_retained void*)string(device.name);
    case AudioDevice::Name::number:
      return (__bridge_retained void*)[NSNumber numberWithInt:7];
    case AudioDevice::Name::absent:
    case AudioDevice::Name::half:
      return nullptr;
  }
}

}  // namespace

namespace hushbox::doubles {

std::uint32_t plug(AudioDevice device) {
  devices.emplace_back(nextObject++, std::move(device));
  announce(kAudioObjectSystemObject, listProperty);
  return devices.back().first;
}

void unplug(std::uint32_t id) {
  std::erase_if(devices, [&](const auto& entry) { return entry.first == id; });
  std::erase_if(listeners, [&](const auto& listener) { return listener.object == id; });
  announce(kAudioObjectSystemObject, listProperty);
}

AudioDevice& device(std::uint32_t id) {
  AudioDevice* const found = find(id);
  if (!found) fail("a test used an audio device that is not plugged in");
  return *found;
}

void setInputVolume(std::uint32_t id, float volume) {
  volume = std::clamp(volume, 0.0F, 1.0F);
  if (device(id).inputVolume == volume) return;
  device(id).inputVolume = volume;
  announce(id, volumeProperty);
}

void setRunning(std::uint32_t id, bool running) {
  if (device(id).running == running) return;
  device(id).running = running;
  announce(id, runningProperty);
}

std::size_t audioListeners() {
  return listeners.size();
}

void failNextAudioCall(std::int32_t status) {
  nextStatus = status;
}

void deliverOneCallAfterRemoval() {
  lateCalls = true;
}

void resetAudio() {
  devices.clear();
  listeners.clear();
  nextObject = firstObject;
  nextStatus = kAudioHardwareNoError;
  lateCalls = false;
}

}  // namespace hushbox::doubles

extern "C" {

Boolean AudioObjectHasProperty(AudioObjectID object, const Address* address) {
  count("AudioObjectHasProperty");
  return check(object, address) == kAudioHardwareNoError;
}

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const Address* address,
                                        UInt32 qualifierSize, const void* qualifier, UInt32* size) {
  count("AudioObjectGetPropertyDataSize");
  requireNoQualifier(qualifierSize, qualifier);
  if (!size) fail("AudioObjectGetPropertyDataSize was given no place for the size");
  if (const OSStatus status = check(object, address)) return status;
  *size = sizeOf(*address);
  return kAudioHardwareNoError;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const Address* address,
                                    UInt32 qualifierSize, const void* qualifier, UInt32* size,
                                    void* out) {
  count("AudioObjectGetPropertyData");
  requireNoQualifier(qualifierSize, qualifier);
  if (!size || !out) fail("AudioObjectGetPropertyData was given no place for the value");
  if (const OSStatus status = check(object, address)) return status;
  if (same(*address, listProperty)) {
    copyList(size, out);
    return kAudioHardwareNoError;
  }
  if (*size < sizeOf(*address)) return kAudioHardwareBadPropertySizeError;
  *size = sizeOf(*address);
  AudioDevice& device = *find(object);
  if (same(*address, volumeProperty)) std::memcpy(out, &*device.inputVolume, sizeof(Float32));
  if (same(*address, runningProperty)) std::memcpy(out, &device.running, sizeof(UInt32));
  if (same(*address, nameProperty)) {
    @autoreleasepool {
      *static_cast<void**>(out) = copiedName(device);
    }
    if (device.kind == AudioDevice::Name::half) *size /= 2;
  }
  return kAudioHardwareNoError;
}

OSStatus AudioObjectSetPropertyData(AudioObjectID object, const Address* address,
                                    UInt32 qualifierSize, const void* qualifier, UInt32 size,
                                    const void* in) {
  count("AudioObjectSetPropertyData");
  requireNoQualifier(qualifierSize, qualifier);
  if (const OSStatus status = check(object, address)) return status;
  if (!same(*address, volumeProperty)) return kAudioHardwareUnsupportedOperationError;
  if (size != sizeof(Float32)) return kAudioHardwareBadPropertySizeError;
  Float32 volume = 0;
  std::memcpy(&volume, in, sizeof volume);
  setInputVolume(object, volume);
  return kAudioHardwareNoError;
}

OSStatus AudioObjectAddPropertyListenerBlock(AudioObjectID object, const Address* address,
                                             dispatch_queue_t queue,
                                             AudioObjectPropertyListenerBlock block) {
  count("AudioObjectAddPropertyListenerBlock");
  if (!block) fail("a listener was added without a block");
  if (!queue) fail("a listener was added without a queue: Core Audio would call it on any thread");
  if (const OSStatus status = check(object, address)) return status;
  listeners.push_back({object, *address, queue, [block copy]});
  return kAudioHardwareNoError;
}

OSStatus AudioObjectRemovePropertyListenerBlock(AudioObjectID object, const Address* address,
                                                dispatch_queue_t queue,
                                                AudioObjectPropertyListenerBlock block) {
  count("AudioObjectRemovePropertyListenerBlock");
  if (const OSStatus status = check(object, address)) return status;
  const auto found = std::find_if(listeners.begin(), listeners.end(), [&](const Listener& added) {
    return added.object == object && same(added.address, *address) && added.queue == queue &&
           (__bridge void*)added.block == (__bridge void*)block;
  });
  if (found == listeners.end()) {
    fail("a listener was removed with another block, queue or address than it was added with");
  }
  if (lateCalls) call(*found);
  listeners.erase(found);
  return kAudioHardwareNoError;
}
}
