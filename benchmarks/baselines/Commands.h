#pragma once

#include <chrono>
#include <cstdio>
#include <functional>
#include <string>

namespace hushbox::baselines {

/// Reads commands from descriptor 3 until its end and answers each on descriptor 4 with the number
/// that `answer` returns; see Baseline.
inline int answerCommands(const std::function<double(const std::string& command)>& answer) {
  std::FILE* const commands = fdopen(3, "r");
  std::FILE* const answers = fdopen(4, "w");
  if (!commands || !answers) return 2;
  char line[64];
  while (std::fgets(line, sizeof line, commands)) {
    const std::string command(line);
    std::fprintf(answers, "%f\n", answer(command.substr(0, command.find('\n'))));
    std::fflush(answers);
  }
  return 0;
}

/// The milliseconds that `search` takes, negative if it returns false.
inline double timed(const std::function<bool()>& search) {
  const auto began = std::chrono::steady_clock::now();
  const bool found = search();
  const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - began;
  return found ? taken.count() : -taken.count();
}

}  // namespace hushbox::baselines
