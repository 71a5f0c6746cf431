#pragma once

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/ChildProcess.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/processes/ChildProcessRules.h"

namespace hushbox {

/// A child process in a process group of its own. It inherits only the standard streams and the
/// environment. The destructor kills a child that has not been waited for.
class SpawnedChildProcess final : public ChildProcess {
 public:
  explicit SpawnedChildProcess(std::shared_ptr<const ChildProcessRules> rules)
      : rules_(std::move(rules)) {}
  ~SpawnedChildProcess() override;

  void setExecutablePath(const std::string& path) override { path_ = path; }
  void setArguments(const std::vector<std::string>& arguments) override { arguments_ = arguments; }

  /// Returns false also while the program ends. Call it once.
  bool launch() override;

  /// Returns nothing, not a part, when the child exceeded its limits: half a report could pass for
  /// a whole one. Does not wait for output of a descendant that holds the pipe open after that.
  std::string readDataToEndOfFile() override;

  void waitUntilExit() override;

 private:
  void killGroup() const;

  std::shared_ptr<const ChildProcessRules> rules_;
  std::string path_;
  std::vector<std::string> arguments_;
  /// 0 before launch() and after waitUntilExit().
  pid_t pid_ = 0;
  std::chrono::steady_clock::time_point deadline_;
  Descriptor output_;
};

}  // namespace hushbox
