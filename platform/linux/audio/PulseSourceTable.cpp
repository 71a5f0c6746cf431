#include "platform/linux/audio/PulseSourceTable.h"

#include <pulse/def.h>
#include <pulse/proplist.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include "support/Text.h"

namespace hushbox {
namespace {

constexpr AudioProperty deviceListChange{audio::systemObject, audio::deviceList};

AudioObjectID makeIdentifier() {
  static AudioObjectID last = audio::systemObject;
  return ++last;
}

std::string_view view(const char* text) {
  return text == nullptr ? "" : text;
}

std::string nameOf(const pa_source_info& info) {
  return text::decodeUtf8Lossy(view(info.description == nullptr ? info.name : info.description));
}

bool isTrue(const pa_proplist* properties, const char* key) {
  return view(pa_proplist_gets(properties, key)) == "true";
}

// PulseAudio marks a level meter by its resampler, PipeWire by stream properties. Versions of
// PipeWire without those properties leave only the names that mixers give to their meters and
// themselves.
bool isMeter(const pa_source_output_info& info) {
  constexpr std::array<std::string_view, 2> mixers{"org.PulseAudio.pavucontrol",
                                                   "org.gnome.VolumeControl"};
  if (view(info.resample_method) == "peaks" || view(info.name) == "Peak detect") return true;
  if (info.proplist == nullptr) return false;
  return isTrue(info.proplist, "resample.peaks") || isTrue(info.proplist, "stream.monitor") ||
         std::ranges::count(mixers,
                            view(pa_proplist_gets(info.proplist, PA_PROP_APPLICATION_ID))) != 0;
}

bool records(const pa_source_output_info& info) {
  return info.corked == 0 && info.source != PA_INVALID_INDEX && !isMeter(info);
}

}  // namespace

float PulseSourceTable::Source::inputVolume() const {
  if (muteSwitch) return 0.0F;
  const float level = static_cast<float>(pa_cvolume_max(&volume)) / PA_VOLUME_NORM;
  return std::min(level, 1.0F);
}

pa_cvolume PulseSourceTable::Source::volumeFor(float level) const {
  const auto exact = static_cast<pa_volume_t>(std::lround(level * PA_VOLUME_NORM));
  const pa_volume_t loudest = level > 0.0F ? std::max<pa_volume_t>(exact, 1) : PA_VOLUME_MUTED;
  const bool silent = pa_cvolume_is_muted(&volume) != 0;
  pa_cvolume result = silent && audibleVolume.channels == volume.channels ? audibleVolume : volume;
  pa_cvolume_scale(&result, loudest);
  return result;
}

const PulseSourceTable::Source* PulseSourceTable::find(AudioObjectID id) const {
  const auto found = std::ranges::find(sources_, id, &Source::id);
  return found == sources_.end() ? nullptr : &*found;
}

PulseSourceTable::Changes PulseSourceTable::setSource(const pa_source_info& info) {
  // A source without channels is not fully set up yet; an event follows when it is. It would count
  // as silent, which looks like a press of the button.
  if (info.monitor_of_sink != PA_INVALID_INDEX || !pa_cvolume_valid(&info.volume)) return {};

  const auto found = std::ranges::find(sources_, info.index, &Source::index);
  if (found != sources_.end()) {
    if (found->key == view(info.name)) return update(*found, info);
    sources_.erase(found);
  }
  add(info);
  return {deviceListChange};
}

PulseSourceTable::Changes PulseSourceTable::removeSource(std::uint32_t index) {
  const auto matches = [&](const Source& source) { return source.index == index; };
  return std::erase_if(sources_, matches) == 0 ? Changes{} : Changes{deviceListChange};
}

PulseSourceTable::Changes PulseSourceTable::setStream(const pa_source_output_info& info) {
  if (!records(info)) return removeStream(info.index);
  streams_[info.index] = info.source;
  return updateRunning();
}

PulseSourceTable::Changes PulseSourceTable::removeStream(std::uint32_t index) {
  streams_.erase(index);
  return updateRunning();
}

void PulseSourceTable::setUnconfirmedLevel(AudioObjectID id, float level) {
  if (Source* const source = findSource(id)) source->unconfirmedLevel = level;
}

std::optional<float> PulseSourceTable::takeUnconfirmedLevel(AudioObjectID id) {
  Source* const source = findSource(id);
  return source == nullptr ? std::nullopt : std::exchange(source->unconfirmedLevel, std::nullopt);
}

PulseSourceTable::Source* PulseSourceTable::findSource(AudioObjectID id) {
  const auto found = std::ranges::find(sources_, id, &Source::id);
  return found == sources_.end() ? nullptr : &*found;
}

PulseSourceTable::Changes PulseSourceTable::clear() {
  streams_.clear();
  return std::exchange(sources_, {}).empty() ? Changes{} : Changes{deviceListChange};
}

bool PulseSourceTable::hasStream(std::uint32_t sourceIndex) const {
  return std::ranges::any_of(streams_,
                             [&](const auto& stream) { return stream.second == sourceIndex; });
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

void PulseSourceTable::add(const pa_source_info& info) {
  sources_.push_back({.id = makeIdentifier(),
                      .index = info.index,
                      .key = std::string(view(info.name)),
                      .name = nameOf(info),
                      .volume = info.volume,
                      .audibleVolume = info.volume,
                      .muteSwitch = info.mute != 0,
                      .running = hasStream(info.index),
                      .unconfirmedLevel = std::nullopt});
}

PulseSourceTable::Changes PulseSourceTable::update(Source& source, const pa_source_info& info) {
  Changes changes;
  if (std::string name = nameOf(info); name != source.name) {
    source.name = std::move(name);
    changes.push_back({source.id, audio::deviceName});
    changes.push_back(deviceListChange);
  }
  const float before = source.inputVolume();
  const bool sameSwitch = source.muteSwitch == (info.mute != 0);
  if (!sameSwitch || !pa_cvolume_equal(&source.volume, &info.volume)) {
    source.unconfirmedLevel = std::nullopt;
  }
  source.volume = info.volume;
  source.muteSwitch = info.mute != 0;
  if (!pa_cvolume_is_muted(&info.volume)) source.audibleVolume = info.volume;
  if (source.inputVolume() != before) changes.push_back({source.id, audio::inputVolume});
  return changes;
}

}  // namespace hushbox
