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

/// A child process in a process group of its own. It is given nothing of ours but the standard
/// streams and the environment. One that has not been waited for is killed at the end of this.
class SpawnedChildProcess final : public ChildProcess {
 public:
  explicit SpawnedChildProcess(std::shared_ptr<const ChildProcessRules> rules)
      : rules_(std::move(rules)) {}
  ~SpawnedChildProcess() override;

  void setExecutablePath(const std::string& path) override { path_ = path; }
  void setArguments(const std::vector<std::string>& arguments) override { arguments_ = arguments; }

  /// False, too, once the program is ending. To be called once.
  bool launch() override;

  /// Empty, not cut short, when the child exceeded its limits: half a report could be taken for a
  /// whole one. Data that a descendant still holds back after that is not waited for.
  std::string readDataToEndOfFile() override;

  void waitUntilExit() override;

 private:
  void killGroup() const;

  std::shared_ptr<const ChildProcessRules> rules_;
  std::string path_;
  std::vector<std::string> arguments_;
  /// 0 before the launch and once it has been waited for.
  pid_t pid_ = 0;
  std::chrono::steady_clock::time_point deadline_;
  Descriptor output_;
};

}  // namespace hushbox
