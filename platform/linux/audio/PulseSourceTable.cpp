#include "platform/linux/audio/PulseSourceTable.h"

#include <pulse/def.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace hushbox {
namespace {

constexpr AudioProperty deviceListChange{audio::systemObject, audio::deviceList};

AudioObjectID makeIdentifier() {
  static AudioObjectID last = audio::systemObject;
  return ++last;
}

float scalarOf(const pa_cvolume& volume) {
  return std::min(static_cast<float>(pa_cvolume_max(&volume)) / PA_VOLUME_NORM, 1.0F);
}

}  // namespace

bool PulseSourceTable::Source::isSilent() const {
  return muteSwitch || pa_cvolume_is_muted(&volume) != 0;
}

float PulseSourceTable::Source::inputVolume() const {
  return isSilent() || hasBounced ? 0.0F : scalarOf(volume);
}

pa_cvolume PulseSourceTable::Source::volumeFor(float level) const {
  const bool isAtZero = pa_cvolume_is_muted(&volume) != 0;
  pa_cvolume result =
      isAtZero && audibleVolume.channels == volume.channels ? audibleVolume : volume;
  if (level > 0.0F && level == scalarOf(result)) return result;
  const auto exact = static_cast<pa_volume_t>(std::lround(level * PA_VOLUME_NORM));
  pa_cvolume_scale(&result, level > 0.0F ? std::max<pa_volume_t>(exact, 1) : PA_VOLUME_MUTED);
  return result;
}

const PulseSourceTable::Source* PulseSourceTable::find(AudioObjectID id) const {
  const auto found = std::ranges::find(sources_, id, &Source::id);
  return found == sources_.end() ? nullptr : &*found;
}

PulseSourceTable::Changes PulseSourceTable::setSource(const PulseSourceReport& report) {
  // A source without channels is not fully set up yet; an event follows when it is. It would count
  // as silent, which looks like a press of the button.
  if (report.isMonitor || !pa_cvolume_valid(&report.volume)) return {};

  const auto found = std::ranges::find(sources_, report.index, &Source::index);
  if (found != sources_.end()) {
    if (found->key == report.key) return update(*found, report);
    leave(*found);
    sources_.erase(found);
  }
  add(report);
  return {deviceListChange};
}

PulseSourceTable::Changes PulseSourceTable::removeSource(std::uint32_t index) {
  const auto source = std::ranges::find(sources_, index, &Source::index);
  if (source == sources_.end()) return {};
  leave(*source);
  sources_.erase(source);
  return {deviceListChange};
}

PulseSourceTable::Changes PulseSourceTable::setBounced(std::uint32_t index) {
  const auto source = std::ranges::find(sources_, index, &Source::index);
  if (source == sources_.end() || source->inputVolume() == 0.0F) return {};
  source->hasBounced = true;
  return {{source->id, audio::inputVolume}};
}

PulseSourceTable::Changes PulseSourceTable::setStream(const PulseStreamReport& report) {
  if (!report.records) return removeStream(report.index);
  streams_[report.index] = {report.source, report.process};
  return updateRunning();
}

PulseSourceTable::Changes PulseSourceTable::removeStream(std::uint32_t index) {
  streams_.erase(index);
  return updateRunning();
}

std::set<std::int32_t> PulseSourceTable::recordingProcesses(AudioObjectID id) const {
  std::set<std::int32_t> result;
  const Source* const source = find(id);
  if (source == nullptr) return result;
  for (const auto& [index, stream] : streams_) {
    if (stream.sourceIndex == source->index && stream.process > 0) result.insert(stream.process);
  }
  return result;
}

PulseSourceTable::Changes PulseSourceTable::clear() {
  streams_.clear();
  followUps_.clear();
  for (const Source& source : sources_) leave(source);
  return std::exchange(sources_, {}).empty() ? Changes{} : Changes{deviceListChange};
}

PulseWrite PulseSourceTable::write(AudioObjectID id, float level) {
  Source& source = *findMutable(id);
  const float previous = std::exchange(source.unconfirmedLevel, level).value_or(0.0F);
  if (level > 0.0F) {
    source.ownMute = Source::OwnMute::none;
    return {source.index, source.volumeFor(level), false};
  }
  // A source that another program has muted stays muted by that program.
  if (!source.isSilent() || previous > 0.0F) source.ownMute = Source::OwnMute::requested;
  if (source.isMutedBySwitch) return {source.index, std::nullopt, true};
  return {source.index, source.volumeFor(0.0F), std::nullopt};
}

std::vector<PulseWrite> PulseSourceTable::takeFollowUps() {
  return std::exchange(followUps_, {});
}

PulseSourceTable::Source* PulseSourceTable::findMutable(AudioObjectID id) {
  const auto found = std::ranges::find(sources_, id, &Source::id);
  return found == sources_.end() ? nullptr : &*found;
}

bool PulseSourceTable::hasStream(std::uint32_t sourceIndex) const {
  return std::ranges::any_of(
      streams_, [&](const auto& stream) { return stream.second.sourceIndex == sourceIndex; });
}

PulseSourceTable::Changes PulseSourceTable::updateRunning() {
  Changes changes;
  for (Source& source : sources_) {
    if (std::exchange(source.running, hasStream(source.index)) != source.running) {
      changes.push_back({source.id, audio::runningSomewhere});
    }
  }
  return changes;
}

void PulseSourceTable::add(const PulseSourceReport& report) {
  Source source{};
  source.id = makeIdentifier();
  source.index = report.index;
  source.key = report.key;
  source.name = report.name;
  source.volume = report.volume;
  source.audibleVolume = report.volume;
  source.muteSwitch = report.muteSwitch;
  source.isHardware = report.isHardware;
  source.running = hasStream(report.index);
  const auto left = leftMutes_.extract(report.key);
  if (left && source.isSilent()) {
    source.ownMute = Source::OwnMute::inEffect;
    source.isMutedBySwitch = left.mapped().isMutedBySwitch;
    if (pa_cvolume_is_muted(&source.volume) != 0)
      source.audibleVolume = left.mapped().audibleVolume;
  }
  const auto place =
      source.isHardware ? std::ranges::find(sources_, false, &Source::isHardware) : sources_.end();
  sources_.insert(place, std::move(source));
}

void PulseSourceTable::leave(const Source& source) {
  if (source.ownMute == Source::OwnMute::none) return;
  leftMutes_[source.key] = {source.audibleVolume, source.isMutedBySwitch};
}

PulseSourceTable::Changes PulseSourceTable::update(Source& source,
                                                   const PulseSourceReport& report) {
  Changes changes;
  if (report.name != source.name) {
    source.name = report.name;
    changes.push_back({source.id, audio::deviceName});
    changes.push_back(deviceListChange);
  }
  const float volumeBefore = source.inputVolume();
  const bool wasSilent = source.isSilent();
  const bool wasAtZero = pa_cvolume_is_muted(&source.volume) != 0;
  const bool isAtZero = pa_cvolume_is_muted(&report.volume) != 0;
  const bool switchMoved = source.muteSwitch != report.muteSwitch;
  const bool isSame = !switchMoved && pa_cvolume_equal(&source.volume, &report.volume) != 0;

  source.hasBounced = false;
  source.volume = report.volume;
  source.muteSwitch = report.muteSwitch;
  if (!isAtZero) source.audibleVolume = report.volume;
  if (source.inputVolume() != volumeBefore) changes.push_back({source.id, audio::inputVolume});

  if (switchMoved || wasAtZero != isAtZero) noteMute(source, wasSilent, switchMoved);
  if (!isSame) {
    source.unconfirmedLevel = std::nullopt;
  } else if (source.running && source.unconfirmedLevel) {
    followUps_.push_back(write(source.id, *source.unconfirmedLevel));
    source.unconfirmedLevel = std::nullopt;
  }
  return changes;
}

void PulseSourceTable::noteMute(Source& source, bool wasSilent, bool switchMoved) {
  using OwnMute = Source::OwnMute;
  if (!wasSilent && source.isSilent() && source.ownMute == OwnMute::requested) {
    source.ownMute = OwnMute::inEffect;
    return;
  }
  source.isMutedBySwitch = switchMoved;
  if (!source.isSilent() && source.ownMute == OwnMute::inEffect) source.ownMute = OwnMute::none;
  if (source.ownMute != OwnMute::inEffect) return;
  // Our mute is in effect, and the button has moved the other of level and switch.
  source.ownMute = OwnMute::none;
  followUps_.push_back({source.index, source.audibleVolume, false});
}

}  // namespace hushbox
