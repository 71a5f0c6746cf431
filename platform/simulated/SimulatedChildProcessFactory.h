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

/// Child processes by script: what each executable prints for its arguments.
///
/// Lines of the journal, each with the number of the child: "1 make", "1 executable
/// /usr/bin/pmset", "1 arguments -g accps", "1 launch -> true", "1 read 46 bytes", "1 wait". A call
/// on the main thread ends in " on the main thread". Reading or waiting before a launch is a
/// violation.
class SimulatedChildProcessFactory final : public ChildProcessFactory {
 public:
  /// What the program prints on its standard output; absent when it cannot be started.
  using Program =
      std::function<std::optional<std::string>(const std::vector<std::string>& arguments)>;

  SimulatedChildProcessFactory(Journal& journal, const SimulatedMainLoop& loop)
      : journal_(journal), loop_(loop) {}

  /// Puts a program at that path, in place of the one before. A path without one cannot be
  /// launched.
  void install(const std::string& path, Program program) { programs_[path] = std::move(program); }
  /// The same with a program that always prints that.
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
