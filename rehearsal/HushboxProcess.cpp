#include "rehearsal/HushboxProcess.h"

#include <fstream>
#include <iterator>
#include <vector>

namespace hushbox::rehearsal {
namespace {

constexpr auto logName = "hushbox.log";

/// Returns the `count`th line of `log` that contains `text`, or an empty string.
std::string lineWith(const std::string& log, const std::string& text, int count) {
  std::size_t at = 0;
  for (; (at = log.find(text, at)) != std::string::npos; at += text.size()) {
    if (--count == 0) break;
  }
  if (at == std::string::npos) return {};
  const std::size_t previous = log.rfind('\n', at);
  const std::size_t start = previous == std::string::npos ? 0 : previous + 1;
  const std::size_t end = log.find('\n', at);
  // A line without its line break is still being written.
  return end == std::string::npos ? std::string() : log.substr(start, end - start);
}

/// The command that runs the program in that environment.
std::vector<std::string> commandFor(const std::string& program, const Environment& additions) {
  if (additions.empty()) return {program};
  std::vector<std::string> command{"env"};
  for (const auto& [name, value] : additions) command.push_back(name + "=" + value);
  command.push_back(program);
  return command;
}

}  // namespace

HushboxProcess::HushboxProcess(const Session& session, const std::string& program,
                               const Environment& additions)
    : path_((session.folder() / logName).string()),
      process_(session.start(logName, commandFor(program, additions))) {
  process_->waitUntilReady([this] { return !log().empty(); }, "Hushbox's first log record");
}

std::string HushboxProcess::log() const {
  std::ifstream file(path_);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string HushboxProcess::waitForLog(const std::string& text, int count) const {
  std::string line;
  process_->waitUntilReady(
      [&] {
        line = lineWith(log().substr(mark_), text, count);
        return !line.empty();
      },
      "the log record \"" + text + "\"");
  return line;
}

void HushboxProcess::mark() {
  mark_ = log().size();
}

int HushboxProcess::quit(int signal) {
  ::kill(process_->pid(), signal);
  return waitForExit();
}

}  // namespace hushbox::rehearsal
