#pragma once

#include <memory>
#include <string>
#include <vector>

namespace hushbox {

/// One child process whose standard output is read by us; its standard input and standard error are
/// the program's own. Used from one thread at a time, any thread.
class ChildProcess {
 public:
  virtual ~ChildProcess() = default;

  virtual void setExecutablePath(const std::string& path) = 0;
  virtual void setArguments(const std::vector<std::string>& arguments) = 0;

  /// Starts the child. False when it cannot be started: no such file, not executable, no resources.
  virtual bool launch() = 0;

  /// Every byte that the child writes to its standard output; blocks until the child has closed it.
  virtual std::string readDataToEndOfFile() = 0;

  /// Blocks until the child has ended. Its exit status is not asked for.
  virtual void waitUntilExit() = 0;
};

/// Makes child processes. Any thread.
class ChildProcessFactory {
 public:
  virtual ~ChildProcessFactory() = default;

  /// A process that has not been launched yet; never empty.
  virtual std::unique_ptr<ChildProcess> make() = 0;
};

}  // namespace hushbox
