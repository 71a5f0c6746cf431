#include "platform/linux/audio/PulseAudioHardware.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace hushbox {
namespace {

// Releases the operation: replies arrive through the request's callbacks. Returns false if the
// request could not be sent.
bool sent(pa_operation* operation) {
  if (operation == nullptr) return false;
  pa_operation_unref(operation);
  return true;
}

template <typename Value>
AudioStatus copyOut(const Value& value, std::uint32_t& size, void* data) {
  if (size < sizeof value) return audio::badPropertySize;
  std::memcpy(data, &value, sizeof value);
  size = sizeof value;
  return audio::noError;
}

}  // namespace

PulseAudioHardware::PulseAudioHardware() {
  waitForDevices();
}

bool PulseAudioHardware::hasProperty(AudioObjectID object, const AudioPropertyAddress& address) {
  return check(object, address) == audio::noError;
}

AudioStatus PulseAudioHardware::getPropertyDataSize(AudioObjectID object,
                                                    const AudioPropertyAddress& address,
                                                    std::uint32_t& size) {
  if (const AudioStatus status = check(object, address); status != audio::noError) return status;
  if (address == audio::deviceList) {
    size = static_cast<std::uint32_t>(table_.sources().size() * sizeof(AudioObjectID));
  } else if (address == audio::deviceName) {
    size = sizeof(void*);
  } else {
    size = sizeof(std::uint32_t);
  }
  return audio::noError;
}

AudioStatus PulseAudioHardware::getPropertyData(AudioObjectID object,
                                                const AudioPropertyAddress& address,
                                                std::uint32_t& size, void* data) {
  if (const AudioStatus status = check(object, address); status != audio::noError) return status;
  if (address == audio::deviceList) {
    const std::size_t count = std::min(size / sizeof(AudioObjectID), table_.sources().size());
    for (std::size_t i = 0; i < count; ++i) {
      std::memcpy(static_cast<char*>(data) + i * sizeof(AudioObjectID), &table_.sources()[i].id,
                  sizeof(AudioObjectID));
    }
    size = static_cast<std::uint32_t>(count * sizeof(AudioObjectID));
    return audio::noError;
  }
  const PulseSourceTable::Source& source = *table_.find(object);
  if (address == audio::inputVolume) return copyOut(source.inputVolume(), size, data);
  if (address == audio::runningSomewhere) {
    return copyOut(std::uint32_t{source.running}, size, data);
  }
  return audio::unsupportedOperation;
}

AudioStatus PulseAudioHardware::getPropertyText(AudioObjectID object,
                                                const AudioPropertyAddress& address,
                                                std::string& text) {
  if (const AudioStatus status = check(object, address); status != audio::noError) return status;
  if (address != audio::deviceName) return audio::unsupportedOperation;
  text = table_.find(object)->name;
  return audio::noError;
}

AudioStatus PulseAudioHardware::setPropertyData(AudioObjectID object,
                                                const AudioPropertyAddress& address,
                                                std::uint32_t size, const void* data) {
  if (connection_.context() == nullptr) return audio::hardwareNotRunning;
  if (const AudioStatus status = check(object, address); status != audio::noError) return status;
  if (address != audio::inputVolume) return audio::unsupportedOperation;
  float level = 0.0F;
  if (size != sizeof level) return audio::badPropertySize;
  std::memcpy(&level, data, sizeof level);
  if (std::isnan(level)) return audio::unsupportedOperation;
  level = std::clamp(level, 0.0F, 1.0F);
  table_.setUnconfirmedLevel(object, level);
  return writeVolume(*table_.find(object), level);
}

RegistrationToken PulseAudioHardware::addPropertyListener(AudioObjectID object,
                                                          const AudioPropertyAddress& address,
                                                          std::function<void()> listener) {
  if (check(object, address) != audio::noError || !listener) return {};
  return listeners_.add({object, address}, std::move(listener));
}

AudioStatus PulseAudioHardware::removePropertyListener(AudioObjectID object,
                                                       const AudioPropertyAddress& address,
                                                       RegistrationToken listener) {
  if (const AudioStatus status = check(object, address); status != audio::noError) return status;
  return listeners_.remove({object, address}, listener) ? audio::noError
                                                        : audio::unsupportedOperation;
}

void PulseAudioHardware::connected(pa_context& context) {
  pa_context_set_subscribe_callback(&context, &onEvent, this);
  constexpr auto facilities = static_cast<pa_subscription_mask_t>(
      PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_SOURCE_OUTPUT);
  sent(pa_context_subscribe(&context, facilities, nullptr, nullptr));
  // Streams first, so that a device already in a call appears as running and does not seem to
  // start.
  sent(pa_context_get_source_output_info_list(&context, &onStream, this));
  sent(pa_context_get_source_info_list(&context, &onSource, this));
}

void PulseAudioHardware::disconnected() {
  complete_ = false;
  note(table_.clear());
  announce();
}

void PulseAudioHardware::onEvent(pa_context* context, pa_subscription_event_type_t type,
                                 std::uint32_t index, void* self) {
  auto& hardware = *static_cast<PulseAudioHardware*>(self);
  const bool isSource =
      (type & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) == PA_SUBSCRIPTION_EVENT_SOURCE;
  if ((type & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_REMOVE) {
    PulseSourceTable& table = hardware.table_;
    hardware.note(isSource ? table.removeSource(index) : table.removeStream(index));
    hardware.announce();
  } else if (isSource) {
    sent(pa_context_get_source_info_by_index(context, index, &onSource, self));
  } else {
    sent(pa_context_get_source_output_info(context, index, &onStream, self));
  }
}

void PulseAudioHardware::onSource(pa_context*, const pa_source_info* info, int last, void* self) {
  auto& hardware = *static_cast<PulseAudioHardware*>(self);
  if (last == 0) {
    hardware.note(hardware.table_.setSource(*info));
    return;
  }
  hardware.complete_ = true;
  hardware.announce();
}

void PulseAudioHardware::onStartedSource(pa_context*, const pa_source_info* info, int last,
                                         void* self) {
  auto& hardware = *static_cast<PulseAudioHardware*>(self);
  if (last == 0) {
    hardware.note(hardware.table_.setSource(*info));
    hardware.repeatUnconfirmedWrite(info->index);
  } else {
    hardware.announce();
  }
}

void PulseAudioHardware::onStream(pa_context* context, const pa_source_output_info* info, int last,
                                  void* self) {
  auto& hardware = *static_cast<PulseAudioHardware*>(self);
  if (last == 0) {
    PulseSourceTable::Changes changes = hardware.table_.setStream(*info);
    hardware.readStartedSources(*context, changes);
    hardware.note(std::move(changes));
  } else {
    hardware.announce();
  }
}

void PulseAudioHardware::waitForDevices() {
  bool late = false;
  const auto setLate = [](gpointer flag) -> gboolean {
    *static_cast<bool*>(flag) = true;
    return G_SOURCE_REMOVE;
  };
  const guint timer = g_timeout_add(static_cast<guint>(startTimeout.count()), setLate, &late);
  while (!complete_ && !late && connection_.isOpen()) g_main_context_iteration(nullptr, TRUE);
  if (!late) g_source_remove(timer);
}

AudioStatus PulseAudioHardware::check(AudioObjectID object,
                                      const AudioPropertyAddress& address) const {
  const bool isSystem = object == audio::systemObject;
  if (!isSystem && table_.find(object) == nullptr) return audio::badObject;
  const bool known = isSystem ? address == audio::deviceList
                              : address == audio::deviceName || address == audio::inputVolume ||
                                    address == audio::runningSomewhere;
  return known ? audio::noError : audio::unknownProperty;
}

void PulseAudioHardware::readStartedSources(pa_context& context,
                                            const PulseSourceTable::Changes& changes) {
  for (const AudioProperty& change : changes) {
    const PulseSourceTable::Source* const source = table_.find(change.object);
    if (change.address != audio::runningSomewhere || source == nullptr || !source->running)
      continue;
    if (!source->unconfirmedLevel) continue;
    sent(pa_context_get_source_info_by_index(&context, source->index, &onStartedSource, this));
  }
}

void PulseAudioHardware::repeatUnconfirmedWrite(std::uint32_t sourceIndex) {
  const auto& sources = table_.sources();
  const auto source = std::ranges::find(sources, sourceIndex, &PulseSourceTable::Source::index);
  if (source == sources.end() || !source->running) return;
  const std::optional<float> level = table_.takeUnconfirmedLevel(source->id);
  if (level) writeVolume(*source, *level);
}

AudioStatus PulseAudioHardware::writeVolume(const PulseSourceTable::Source& source, float level) {
  pa_context* const context = connection_.context();
  const pa_cvolume volume = source.volumeFor(level);
  const bool isSent =
      sent(pa_context_set_source_volume_by_index(context, source.index, &volume, nullptr, nullptr));
  // The switch comes second; otherwise the old level would be audible for a moment.
  const bool clearsSwitch = level > 0.0F;
  const bool isCleared = !clearsSwitch || sent(pa_context_set_source_mute_by_index(
                                              context, source.index, 0, nullptr, nullptr));
  return isSent && isCleared ? audio::noError : audio::hardwareNotRunning;
}

void PulseAudioHardware::note(PulseSourceTable::Changes changes) {
  unannounced_.insert(unannounced_.end(), changes.begin(), changes.end());
}

void PulseAudioHardware::announce() {
  const PulseSourceTable::Changes changes = std::exchange(unannounced_, {});
  if (changes.empty()) return;
  listeners_.removeUnless([this](AudioObjectID object) {
    return object == audio::systemObject || table_.find(object) != nullptr;
  });
  listeners_.call(changes);
}

}  // namespace hushbox
