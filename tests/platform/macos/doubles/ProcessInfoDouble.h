#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace hushbox::doubles {

/// The process as the system's power management sees it. Main thread only.

/// An activity that the process holds.
struct HeldActivity {
  std::uint64_t options = 0;
  std::string reason;
};
std::vector<HeldActivity> activities();

/// App Nap: while the process holds no latency-critical activity, timers and delayed blocks are due
/// only every ten seconds. Initially off, as during the first minutes in the background.
void setNapping(bool napping);

/// Returns when something that is due at this time may run, in nanoseconds of the loop's clock.
std::uint64_t nappedUntil(std::uint64_t due);

void resetProcessInfo();

}  // namespace hushbox::doubles
