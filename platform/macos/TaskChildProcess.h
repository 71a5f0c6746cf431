#pragma once

#import <Foundation/Foundation.h>

#include "platform/ChildProcess.h"

namespace hushbox {

/// A child process run by NSTask; an NSPipe reads its standard output.
class TaskChildProcess final : public ChildProcess {
 public:
  void setExecutablePath(const std::string& path) override { path_ = path; }
  void setArguments(const std::vector<std::string>& arguments) override { arguments_ = arguments; }

  /// Call this once. Returns false the second time.
  bool launch() override;

  /// Returns empty text if the child was not launched.
  std::string readDataToEndOfFile() override;

  void waitUntilExit() override;

 private:
  std::string path_;
  std::vector<std::string> arguments_;
  /// Both are nil before the launch.
  NSTask* task_ = nil;
  NSFileHandle* output_ = nil;
};

}  // namespace hushbox
