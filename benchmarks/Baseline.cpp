#include "benchmarks/Baseline.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "benchmarks/Result.h"
#include "rehearsal/DeskError.h"

namespace hushbox {

Baseline::Baseline(const rehearsal::Session& session, std::vector<std::string> command) {
  std::array<int, 2> commands{};
  std::array<int, 2> answers{};
  if (pipe2(commands.data(), O_CLOEXEC) != 0 ||
      pipe2(answers.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    throw rehearsal::DeskError("no pipe for a baseline");
  }
  commands_ = commands[1];
  answers_ = answers[0];
  process_ = session.start("baseline.log", std::move(command), {{commands[0], 3}, {answers[1], 4}});
  close(commands[0]);
  close(answers[1]);
}

Baseline::~Baseline() {
  close(commands_);
  close(answers_);
}

std::unique_ptr<Baseline> Baseline::pyatspi(const rehearsal::Session& session) {
  static const bool isInstalled = std::system("/usr/bin/python3 -c 'import pyatspi' 2>&-") == 0;
  if (!isInstalled) {
    printSkipped("the script on pyatspi, which is not installed");
    return nullptr;
  }
  return std::make_unique<Baseline>(
      session,
      std::vector<std::string>{"/usr/bin/python3", HUSHBOX_BASELINES "/pyatspi_client.py"});
}

std::unique_ptr<Baseline> Baseline::libatspi(const rehearsal::Session& session) {
  if (std::string_view(HUSHBOX_LIBATSPI_CLIENT).empty()) {
    printSkipped("the program on libatspi, which is not installed");
    return nullptr;
  }
  return std::make_unique<Baseline>(session, std::vector<std::string>{HUSHBOX_LIBATSPI_CLIENT});
}

std::unique_ptr<Baseline> Baseline::sequential(const rehearsal::Session& session) {
  return std::make_unique<Baseline>(session, std::vector<std::string>{HUSHBOX_SEQUENTIAL_CLIENT});
}

void Baseline::tell(const std::string& command) const {
  const std::string line = command + "\n";
  if (write(commands_, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
    throw rehearsal::DeskError("the baseline has exited");
}

double Baseline::answer(rehearsal::Milliseconds deadline) {
  process_->waitUntilReady(
      [this] {
        std::array<char, 256> bytes{};
        const ssize_t count = read(answers_, bytes.data(), bytes.size());
        if (count > 0) received_.append(bytes.data(), static_cast<std::size_t>(count));
        return received_.find('\n') != std::string::npos;
      },
      "the baseline's answer", deadline);
  const std::size_t end = received_.find('\n');
  const double answer = std::strtod(received_.substr(0, end).c_str(), nullptr);
  received_.erase(0, end + 1);
  return answer;
}

}  // namespace hushbox
