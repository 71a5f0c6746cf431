#pragma once

#include <memory>
#include <string>
#include <vector>

namespace hushbox {

/// A child process whose standard output we read. It inherits our standard input and standard
/// error. Any thread, one at a time.
class ChildProcess {
 public:
  virtual ~ChildProcess() = default;

  /// The program to run, as an absolute path. Set before `launch()`.
  virtual void setExecutablePath(const std::string& path) = 0;
  /// The program's arguments, without its own name. Set before `launch()`.
  virtual void setArguments(const std::vector<std::string>& arguments) = 0;

  /// Starts the child, once. Returns false if it cannot be started: the file does not exist or is
  /// not executable, or resources are short.
  virtual bool launch() = 0;

  /// Blocks until the child closes its standard output and returns everything that it wrote. An
  /// adapter may limit time and size; a child that exceeds a limit is killed and the result empty.
  virtual std::string readDataToEndOfFile() = 0;

  /// Blocks until the child has exited. The exit status is ignored.
  virtual void waitUntilExit() = 0;
};

/// Makes child processes. Any thread.
class ChildProcessFactory {
 public:
  virtual ~ChildProcessFactory() = default;

  /// Returns a process that has not been launched; never null.
  virtual std::unique_ptr<ChildProcess> make() = 0;
};

}  // namespace hushbox
