#include "platform/simulated/SimulatedAudioHardware.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <sstream>
#include <utility>

#include "platform/simulated/Violation.h"

namespace hushbox {
namespace {

constexpr const char* audioPart = "audio";

/// Returns a four-character code as text, and any other number in decimal.
std::string codeText(std::uint32_t code) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const auto character = static_cast<char>(code >> shift & 0xFF);
    if (character < ' ' || character > '~') return std::to_string(static_cast<std::int32_t>(code));
    text += character;
  }
  return text;
}

std::string statusText(AudioStatus status) {
  return codeText(static_cast<std::uint32_t>(status));
}

std::string addressText(const AudioPropertyAddress& address) {
  if (address == audio::deviceList) return "device list";
  if (address == audio::deviceName) return "name";
  if (address == audio::inputVolume) return "input volume";
  if (address == audio::runningSomewhere) return "running";
  return codeText(address.selector) + "/" + codeText(address.scope) + "/" +
         std::to_string(address.element);
}

/// Returns the 32-bit words of a property's value as numbers of the property's type.
std::string valueText(const AudioPropertyAddress& address, const void* data, std::size_t size) {
  std::ostringstream text;
  for (std::size_t offset = 0; offset + 4 <= size; offset += 4) {
    std::array<std::byte, 4> word{};
    std::memcpy(word.data(), static_cast<const std::byte*>(data) + offset, word.size());
    if (offset > 0) text << ' ';
    if (address == audio::inputVolume) {
      text << std::bit_cast<float>(word);
    } else {
      text << std::bit_cast<std::uint32_t>(word);
    }
  }
  return text.str();
}

template <typename Value>
std::vector<std::byte> bytesOf(const Value* values, std::size_t count) {
  std::vector<std::byte> bytes(count * sizeof(Value));
  if (count > 0) std::memcpy(bytes.data(), values, bytes.size());
  return bytes;
}

}  // namespace

AudioObjectID SimulatedAudioHardware::plug(SimulatedDevice device,
                                           std::optional<std::size_t> place) {
  const AudioObjectID id = nextID_;
  plugAs(id, std::move(device), place);
  return id;
}

void SimulatedAudioHardware::plugAs(AudioObjectID id, SimulatedDevice device,
                                    std::optional<std::size_t> place) {
  if (id <= audio::systemObject || find(id)) {
    reportViolation("A device was plugged in under an identifier that is taken.");
    return;
  }
  nextID_ = std::max(nextID_, id + 1);
  const float volume = device.inputVolume.value_or(0);
  devices_[id] = {std::move(device), volume > 0 ? volume : 1};
  const std::size_t at = std::min(place.value_or(order_.size()), order_.size());
  order_.insert(order_.begin() + static_cast<std::ptrdiff_t>(at), id);
  announce(audio::systemObject, audio::deviceList);
}

void SimulatedAudioHardware::unplug(AudioObjectID id) {
  require(id);
  devices_.erase(id);
  std::erase(order_, id);
  std::erase_if(listeners_, [id](const ListenerRef& listener) { return listener->object == id; });
  announce(audio::systemObject, audio::deviceList);
}

void SimulatedAudioHardware::reorder(std::vector<AudioObjectID> order) {
  if (!std::is_permutation(order.begin(), order.end(), order_.begin(), order_.end())) {
    reportViolation("A new order of the devices must contain the same devices.");
    return;
  }
  if (std::exchange(order_, std::move(order)) != order_) {
    announce(audio::systemObject, audio::deviceList);
  }
}

void SimulatedAudioHardware::setInputVolume(AudioObjectID id, float volume) {
  changeVolume(id, volume);
}

void SimulatedAudioHardware::pressMuteButton(AudioObjectID id) {
  changeVolume(id, inputVolume(id) > 0 ? 0 : require(id).volumeBeforeMute);
}

void SimulatedAudioHardware::changeVolume(AudioObjectID id, float volume) {
  Device& device = require(id);
  const float before = device.data.inputVolume.value_or(0);
  const float after = std::clamp(volume, 0.0F, 1.0F);
  if (after == before) return;
  device.data.inputVolume = after;
  if (before > 0) device.volumeBeforeMute = before;
  announce(id, audio::inputVolume);
  if (after == 0 && putsBackAfter_) putBackLater(id, before);
}

void SimulatedAudioHardware::putBackLater(AudioObjectID id, float volume) {
  loop_.after(*putsBackAfter_, [this, id, volume] {
    const Device* device = find(id);
    if (device && device->data.inputVolume == 0.0F) changeVolume(id, volume);
  });
}

void SimulatedAudioHardware::setRunning(AudioObjectID id, bool running) {
  const std::uint32_t value = running ? 1 : 0;
  if (std::exchange(require(id).data.running, value) != value) {
    announce(id, audio::runningSomewhere);
  }
}

void SimulatedAudioHardware::announce(AudioObjectID object, const AudioPropertyAddress& address) {
  for (const ListenerRef& listener : listeners_) {
    if (listener->object != object || listener->address != address) continue;
    loop_.deliver(announcementDelay_, [this, listener] {
      if (deliversAfterRemoval_ || isInPlace(listener)) listener->call();
    });
  }
}

float SimulatedAudioHardware::inputVolume(AudioObjectID id) const {
  const auto found = devices_.find(id);
  return found == devices_.end() ? 0 : found->second.data.inputVolume.value_or(0);
}

void SimulatedAudioHardware::fireListenersOnce() {
  for (const ListenerRef& listener : std::vector(listeners_)) listener->call();
}

SimulatedAudioHardware::Device* SimulatedAudioHardware::find(AudioObjectID id) {
  const auto found = devices_.find(id);
  return found == devices_.end() ? nullptr : &found->second;
}

SimulatedAudioHardware::Device& SimulatedAudioHardware::require(AudioObjectID id) {
  if (!find(id)) reportViolation("There is no device " + std::to_string(id) + ".");
  return devices_[id];
}

bool SimulatedAudioHardware::isInPlace(const ListenerRef& listener) const {
  return std::find(listeners_.begin(), listeners_.end(), listener) != listeners_.end();
}

bool SimulatedAudioHardware::exists(AudioObjectID object, const AudioPropertyAddress& address) {
  if (object == audio::systemObject) return address == audio::deviceList;
  const Device* device = find(object);
  if (!device) return false;
  if (address == audio::inputVolume) return device->data.inputVolume.has_value();
  return address == audio::deviceName || address == audio::runningSomewhere;
}

AudioStatus SimulatedAudioHardware::statusOf(AudioObjectID object,
                                             const AudioPropertyAddress& address) {
  if (object != audio::systemObject && !find(object)) return audio::badObject;
  return exists(object, address) ? audio::noError : audio::unknownProperty;
}

std::optional<AudioFault> SimulatedAudioHardware::takeFault(AudioOperation operation,
                                                            AudioObjectID object,
                                                            const AudioPropertyAddress& address) {
  for (AudioFault& fault : faults_) {
    if (fault.operation != operation || fault.address != address) continue;
    if (fault.object.value_or(object) != object || fault.times == 0) continue;
    if (fault.times) --*fault.times;
    loop_.sleep(fault.duration);
    return fault;
  }
  return std::nullopt;
}

std::vector<std::byte> SimulatedAudioHardware::valueOf(AudioObjectID object,
                                                       const AudioPropertyAddress& address) {
  if (address == audio::deviceList) return bytesOf(order_.data(), order_.size());
  const SimulatedDevice& device = require(object).data;
  if (address == audio::inputVolume) return bytesOf(&*device.inputVolume, 1);
  return bytesOf(&device.running, 1);
}

bool SimulatedAudioHardware::hasProperty(AudioObjectID object,
                                         const AudioPropertyAddress& address) {
  loop_.requireMainThread("hasProperty");
  const auto fault = takeFault(AudioOperation::hasProperty, object, address);
  const bool has = !fault && exists(object, address);
  journal_.add(audioPart, "has ", object, ' ', addressText(address), ": ", has);
  return has;
}

AudioStatus SimulatedAudioHardware::getPropertyDataSize(AudioObjectID object,
                                                        const AudioPropertyAddress& address,
                                                        std::uint32_t& size) {
  loop_.requireMainThread("getPropertyDataSize");
  const auto fault = takeFault(AudioOperation::getPropertyDataSize, object, address);
  AudioStatus status = fault ? fault->status : audio::noError;
  if (status == audio::noError) status = statusOf(object, address);
  if (status == audio::noError) {
    // The value of a text property is a pointer to a text object.
    const bool isText = address == audio::deviceName;
    size = static_cast<std::uint32_t>(isText ? sizeof(void*) : valueOf(object, address).size());
  }
  if (fault && fault->size) size = *fault->size;
  journal_.add(audioPart, "size ", object, ' ', addressText(address), ": ", size, " bytes -> ",
               statusText(status));
  return status;
}

AudioStatus SimulatedAudioHardware::getPropertyData(AudioObjectID object,
                                                    const AudioPropertyAddress& address,
                                                    std::uint32_t& size, void* data) {
  loop_.requireMainThread("getPropertyData");
  const std::uint32_t capacity = size;
  const auto fault = takeFault(AudioOperation::getPropertyData, object, address);
  AudioStatus status = fault ? fault->status : audio::noError;
  if (status == audio::noError) status = statusOf(object, address);
  if (status == audio::noError && address == audio::deviceName) {
    status = audio::unsupportedOperation;
  }
  std::vector<std::byte> value;
  if (status == audio::noError) {
    value = valueOf(object, address);
    // A list is cut to the capacity; a scalar is not.
    if (address == audio::deviceList)
      value.resize(std::min<std::size_t>(value.size(), capacity & ~3U));
    if (value.size() > capacity) status = audio::badPropertySize;
  }
  if (status == audio::noError) {
    size = static_cast<std::uint32_t>(value.size());
    if (size > 0) std::memcpy(data, value.data(), size);
  } else if (outputOfFailedReads_) {
    std::memset(data, std::to_integer<int>(outputOfFailedReads_->first), size);
  }
  journal_.add(audioPart, "get ", object, ' ', addressText(address), " (", capacity, " bytes): ",
               status == audio::noError ? valueText(address, value.data(), value.size()) + " " : "",
               "-> ", statusText(status));
  return status;
}

AudioStatus SimulatedAudioHardware::getPropertyText(AudioObjectID object,
                                                    const AudioPropertyAddress& address,
                                                    std::string& text) {
  loop_.requireMainThread("getPropertyText");
  const auto fault = takeFault(AudioOperation::getPropertyText, object, address);
  AudioStatus status = fault ? fault->status : audio::noError;
  if (status == audio::noError) status = statusOf(object, address);
  if (status == audio::noError) {
    const auto* name = address == audio::deviceName ? &require(object).data.name : nullptr;
    if (name && *name) {
      text = **name;
    } else {
      status = audio::unsupportedOperation;
    }
  }
  if (status != audio::noError && outputOfFailedReads_) text = outputOfFailedReads_->second;
  journal_.add(audioPart, "text ", object, ' ', addressText(address), ": ",
               status == audio::noError ? '"' + text + "\" " : "", "-> ", statusText(status));
  return status;
}

AudioStatus SimulatedAudioHardware::setPropertyData(AudioObjectID object,
                                                    const AudioPropertyAddress& address,
                                                    std::uint32_t size, const void* data) {
  loop_.requireMainThread("setPropertyData");
  const auto fault = takeFault(AudioOperation::setPropertyData, object, address);
  AudioStatus status = fault ? fault->status : audio::noError;
  if (status == audio::noError) status = statusOf(object, address);
  float volume = 0;
  if (status == audio::noError) {
    if (address != audio::inputVolume) {
      status = audio::unsupportedOperation;
    } else if (size != sizeof volume) {
      status = audio::badPropertySize;
    } else {
      std::memcpy(&volume, data, sizeof volume);
      if (std::isnan(volume)) status = audio::unsupportedOperation;
    }
  }
  journal_.add(audioPart, "set ", object, ' ', addressText(address), " (", size,
               " bytes): ", valueText(address, data, size), " -> ", statusText(status));
  if (status == audio::noError) changeVolume(object, volume);
  return status;
}

RegistrationToken SimulatedAudioHardware::addPropertyListener(AudioObjectID object,
                                                              const AudioPropertyAddress& address,
                                                              std::function<void()> listener) {
  loop_.requireMainThread("addPropertyListener");
  const auto fault = takeFault(AudioOperation::addPropertyListener, object, address);
  const bool adds = !fault && exists(object, address);
  journal_.add(audioPart, "add listener ", object, ' ', addressText(address), " -> ",
               adds ? "added" : "refused");
  if (!adds) return {};
  listeners_.push_back(std::make_shared<Listener>(Listener{object, address, std::move(listener)}));
  return RegistrationToken(listeners_.back());
}

AudioStatus SimulatedAudioHardware::removePropertyListener(AudioObjectID object,
                                                           const AudioPropertyAddress& address,
                                                           RegistrationToken listener) {
  loop_.requireMainThread("removePropertyListener");
  const auto fault = takeFault(AudioOperation::removePropertyListener, object, address);
  AudioStatus status = fault ? fault->status : audio::noError;
  if (status == audio::noError) status = statusOf(object, address);
  if (status == audio::noError) {
    const auto removed = std::erase_if(listeners_, [&](const ListenerRef& one) {
      return one == listener.native() && one->object == object && one->address == address;
    });
    if (removed == 0) status = audio::unsupportedOperation;
  }
  journal_.add(audioPart, "remove listener ", object, ' ', addressText(address), " -> ",
               statusText(status));
  return status;
}

}  // namespace hushbox
