#pragma once

#include <memory>
#include <string>
#include <vector>

#include "rehearsal/Session.h"

namespace hushbox {

/// A program that does the same task as Hushbox when it is told to and answers with a number, such
/// as the milliseconds that it took. See benchmarks/baselines.
class Baseline {
 public:
  /// What the results call them.
  static constexpr const char* pyatspiName = "pyatspi script";
  static constexpr const char* libatspiName = "program on libatspi";
  static constexpr const char* sequentialName = "sequential D-Bus";

  /// Starts the program, which reads commands from its descriptor 3 and answers on its descriptor
  /// 4, a line each.
  Baseline(const rehearsal::Session& session, std::vector<std::string> command);
  ~Baseline();

  /// The script on pyatspi; null, with a line that says so, if pyatspi is not installed.
  static std::unique_ptr<Baseline> pyatspi(const rehearsal::Session& session);
  /// The program on libatspi; null, with a line that says so, if it was not built.
  static std::unique_ptr<Baseline> libatspi(const rehearsal::Session& session);
  /// The program that makes one D-Bus call after another.
  static std::unique_ptr<Baseline> sequential(const rehearsal::Session& session);
  Baseline(const Baseline&) = delete;
  Baseline& operator=(const Baseline&) = delete;

  /// Sends a command without waiting for the answer.
  void tell(const std::string& command) const;
  /// Waits for the next answer, running the main context. Throws DeskError at the deadline and when
  /// the program has exited.
  double answer(rehearsal::Milliseconds deadline = rehearsal::Milliseconds{120'000});
  double ask(const std::string& command) {
    tell(command);
    return answer();
  }

 private:
  int commands_ = -1;
  int answers_ = -1;
  std::string received_;
  std::unique_ptr<rehearsal::ServerProcess> process_;
};

}  // namespace hushbox
