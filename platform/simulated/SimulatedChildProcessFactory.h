#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ChildProcess.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/SimulatedMainLoop.h"

namespace hushbox {

/// Scripted child processes: what each executable prints for its arguments.
///
/// Journal lines, each with the child's number: "1 make", "1 executable /usr/bin/pmset",
/// "1 arguments -g accps", "1 launch -> true", "1 read 46 bytes", "1 wait". The line of a call on
/// the main thread ends in " on the main thread". Reading or waiting before the launch is a
/// violation.
class SimulatedChildProcessFactory final : public ChildProcessFactory {
 public:
  /// Returns what the program prints on its standard output, or nullopt if it cannot be started.
  using Program =
      std::function<std::optional<std::string>(const std::vector<std::string>& arguments)>;

  SimulatedChildProcessFactory(Journal& journal, const SimulatedMainLoop& loop)
      : journal_(journal), loop_(loop) {}

  /// Installs a program at that path, replacing any other. Without one, a launch fails.
  void install(const std::string& path, Program program) { programs_[path] = std::move(program); }
  /// Installs a program that prints `output` for any arguments.
  void install(const std::string& path, std::string output);
  void uninstall(const std::string& path) { programs_.erase(path); }

  std::unique_ptr<ChildProcess> make() override;

 private:
  class Child;

  Journal& journal_;
  const SimulatedMainLoop& loop_;
  std::map<std::string, Program> programs_;
  int made_ = 0;
};

}  // namespace hushbox
