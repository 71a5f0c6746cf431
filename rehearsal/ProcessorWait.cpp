#include "rehearsal/ProcessorWait.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

namespace hushbox::rehearsal {

std::chrono::nanoseconds ProcessorWait::longest() const {
  std::chrono::nanoseconds longest{};
  for (const auto& [thread, waited] : read()) {
    const auto before = before_.find(thread);
    longest = std::max(longest, before == before_.end() ? waited : waited - before->second);
  }
  return longest;
}

std::map<pid_t, std::chrono::nanoseconds> ProcessorWait::read() const {
  std::map<pid_t, std::chrono::nanoseconds> waits;
  for (const pid_t process : processes_) {
    std::error_code error;
    const auto threads = "/proc/" + std::to_string(process) + "/task";
    for (const auto& thread : std::filesystem::directory_iterator(threads, error)) {
      const pid_t number = std::stoi(thread.path().filename());
      std::string name;
      std::getline(std::ifstream(thread.path() / "comm"), name);
      if (filter_ && !filter_(number, name)) continue;
      long long ran = 0;
      long long waited = 0;
      std::ifstream(thread.path() / "schedstat") >> ran >> waited;
      waits[number] = std::chrono::nanoseconds(waited);
    }
  }
  return waits;
}

}  // namespace hushbox::rehearsal
