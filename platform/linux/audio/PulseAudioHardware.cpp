#include "platform/linux/audio/PulseAudioHardware.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <utility>

namespace hushbox {
namespace {

template <typename Value>
AudioStatus copyOut(const Value& value, std::uint32_t& size, void* data) {
  if (size < sizeof value) return audio::badPropertySize;
  std::memcpy(data, &value, sizeof value);
  size = sizeof value;
  return audio::noError;
}

}  // namespace

PulseAudioHardware::PulseAudioHardware()
    : reports_(std::make_shared<PulseReportQueue>([this] { deliverUntil(Instant::max()); })),
      thread_(reports_) {
  reports_->waitForReport(startTimeout);
  deliverUntil(Instant::max());
}

PulseAudioHardware::~PulseAudioHardware() {
  reports_->close();
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
  if (connection_ == 0) return audio::hardwareNotRunning;
  if (const AudioStatus status = check(object, address); status != audio::noError) return status;
  if (address != audio::inputVolume) return audio::unsupportedOperation;
  float level = 0.0F;
  if (size != sizeof level) return audio::badPropertySize;
  std::memcpy(&level, data, sizeof level);
  if (std::isnan(level)) return audio::unsupportedOperation;
  send(table_.write(object, std::clamp(level, 0.0F, 1.0F)));
  return audio::noError;
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

std::vector<std::int32_t> PulseAudioHardware::recordingProcesses() const {
  std::set<std::int32_t> result;
  for (const PulseSourceTable::Source& source : table_.sources()) {
    if (listeners_.has({source.id, audio::runningSomewhere})) {
      result.merge(table_.recordingProcesses(source.id));
    }
  }
  return {result.begin(), result.end()};
}

void PulseAudioHardware::deliverUntil(Instant latest) {
  const std::weak_ptr<PulseReportQueue> alive = reports_;
  for (auto reports = alive.lock(); reports != nullptr; reports = alive.lock()) {
    const auto report = reports->takeUntil(latest);
    reports.reset();
    if (!report) return;
    // Don't touch `this` afterwards; a listener may have destroyed it.
    std::visit([this](const auto& content) { apply(content); }, report->content);
  }
}

void PulseAudioHardware::apply(const PulseServerReport& report) {
  connection_ = report.connection;
  // Streams first, so that a device already in a call appears as running and does not seem to
  // start.
  for (const PulseStreamReport& stream : report.streams) table_.setStream(stream);
  PulseSourceTable::Changes changes;
  for (const PulseSourceReport& source : report.sources) {
    std::ranges::copy(table_.setSource(source), std::back_inserter(changes));
  }
  announce(changes);
}

void PulseAudioHardware::apply(const PulseServerLoss&) {
  connection_ = 0;
  announce(table_.clear());
}

void PulseAudioHardware::apply(const PulseSourceReport& report) {
  const PulseSourceTable::Changes changes = table_.setSource(report);
  for (const PulseWrite& write : table_.takeFollowUps()) send(write);
  announce(changes);
}

void PulseAudioHardware::apply(const PulseSourceRemoval& report) {
  announce(table_.removeSource(report.index));
}

void PulseAudioHardware::apply(const PulseVolumeBounce& report) {
  announce(table_.setBounced(report.index));
}

void PulseAudioHardware::apply(const PulseStreamReport& report) {
  announce(table_.setStream(report));
}

void PulseAudioHardware::apply(const PulseStreamRemoval& report) {
  announce(table_.removeStream(report.index));
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

void PulseAudioHardware::send(PulseWrite write) {
  write.connection = connection_;
  thread_.write(write);
}

void PulseAudioHardware::announce(const PulseSourceTable::Changes& changes) {
  if (changes.empty()) return;
  listeners_.removeUnless([this](AudioObjectID object) {
    return object == audio::systemObject || table_.find(object) != nullptr;
  });
  listeners_.call(changes);
}

}  // namespace hushbox
