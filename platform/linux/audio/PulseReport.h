#pragma once

#include <pulse/introspect.h>

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "platform/Time.h"

namespace hushbox {

/// A source as the sound server described it at one moment. Owns its values, so it can be passed to
/// another thread.
struct PulseSourceReport {
  PulseSourceReport(const pa_source_info& info);  // NOLINT: a report is the info, kept.

  /// Whether nothing that a client can see differs. Leaves out the latencies, which change all the
  /// time.
  bool isSame(const PulseSourceReport& other) const;

  std::uint32_t index;
  /// The server's unique name for the source; not shown to the user.
  std::string key;
  /// The name that the user sees, well-formed UTF-8.
  std::string name;
  pa_cvolume volume;
  bool muteSwitch;
  bool isMonitor;
  /// Whether it stands for a device, not for a filter or another virtual source.
  bool isHardware;
  /// Whether something records from it, be it a meter.
  bool isRunning;
  /// All other visible fields as text, to be compared only.
  std::string details;
};

/// A recording stream as the sound server described it at one moment.
struct PulseStreamReport {
  PulseStreamReport(const pa_source_output_info& info);  // NOLINT: a report is the info, kept.

  std::uint32_t index;
  std::uint32_t source;
  /// The process that the client says it is, 0 if it says none.
  std::int32_t process;
  /// False for paused streams, for streams without a source and for the level meters of mixers.
  bool records;
};

/// What the sound server has when a connection to it is ready.
struct PulseServerReport {
  /// Counts the connections. Requests name the connection that their source index belongs to.
  std::uint32_t connection;
  std::vector<PulseSourceReport> sources;
  std::vector<PulseStreamReport> streams;
};

struct PulseSourceRemoval {
  std::uint32_t index;
};

struct PulseStreamRemoval {
  std::uint32_t index;
};

/// The source's volume dropped to 0 and was restored before the server could report it.
struct PulseVolumeBounce {
  std::uint32_t index;
};

struct PulseServerLoss {};

/// One thing that the sound server reported.
struct PulseReport {
  /// When it happened: when the event arrived that led to the report.
  Instant time;
  std::variant<PulseServerReport, PulseServerLoss, PulseSourceReport, PulseSourceRemoval,
               PulseVolumeBounce, PulseStreamReport, PulseStreamRemoval>
      content;
};

}  // namespace hushbox
