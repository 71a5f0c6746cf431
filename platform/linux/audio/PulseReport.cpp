#include "platform/linux/audio/PulseReport.h"

#include <pulse/def.h>
#include <pulse/proplist.h>
#include <pulse/xmalloc.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <sstream>
#include <string_view>
#include <system_error>

#include "support/Text.h"

namespace hushbox {
namespace {

std::string_view view(const char* text) {
  return text == nullptr ? "" : text;
}

std::string nameOf(const pa_source_info& info) {
  return text::decodeUtf8Lossy(view(info.description == nullptr ? info.name : info.description));
}

std::string detailsOf(const pa_source_info& info) {
  std::ostringstream details;
  details << info.owner_module << ' ' << info.flags << ' ' << info.configured_latency << ' '
          << info.base_volume << ' ' << info.state << ' ' << info.n_volume_steps << ' ' << info.card
          << ' ' << info.sample_spec.format << ' ' << info.sample_spec.rate << ' '
          << view(info.driver);
  for (std::uint8_t i = 0; i < info.channel_map.channels; ++i) {
    details << ' ' << info.channel_map.map[i];
  }
  for (std::uint32_t i = 0; i < info.n_ports; ++i) {
    const pa_source_port_info& port = *info.ports[i];
    details << '\n' << view(port.name) << ' ' << port.available << (&port == info.active_port);
  }
  if (info.proplist != nullptr) {
    char* const properties = pa_proplist_to_string(info.proplist);
    details << '\n' << view(properties);
    pa_xfree(properties);
  }
  return details.str();
}

/// Returns 0 for a client that does not name its process, as modules of the server itself.
std::int32_t processOf(const pa_source_output_info& info) {
  if (info.proplist == nullptr) return 0;
  const std::string_view text =
      view(pa_proplist_gets(info.proplist, PA_PROP_APPLICATION_PROCESS_ID));
  std::int32_t process = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), process);
  return error == std::errc() && end == text.data() + text.size() ? process : 0;
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

}  // namespace

PulseSourceReport::PulseSourceReport(const pa_source_info& info)
    : index(info.index),
      key(view(info.name)),
      name(nameOf(info)),
      volume(info.volume),
      muteSwitch(info.mute != 0),
      isMonitor(info.monitor_of_sink != PA_INVALID_INDEX),
      isHardware((info.flags & PA_SOURCE_HARDWARE) != 0),
      isRunning(info.state == PA_SOURCE_RUNNING),
      details(detailsOf(info)) {}

bool PulseSourceReport::isSame(const PulseSourceReport& other) const {
  return index == other.index && key == other.key && name == other.name &&
         pa_cvolume_equal(&volume, &other.volume) != 0 && muteSwitch == other.muteSwitch &&
         details == other.details;
}

PulseStreamReport::PulseStreamReport(const pa_source_output_info& info)
    : index(info.index),
      source(info.source),
      process(processOf(info)),
      records(info.corked == 0 && info.source != PA_INVALID_INDEX && !isMeter(info)) {}

}  // namespace hushbox
