#pragma once

#import <Foundation/Foundation.h>

#include "platform/ChildProcess.h"

namespace hushbox {

/// A child process run by NSTask, its standard output read through an NSPipe.
class TaskChildProcess final : public ChildProcess {
 public:
  void setExecutablePath(const std::string& path) override { path_ = path; }
  void setArguments(const std::vector<std::string>& arguments) override { arguments_ = arguments; }

  /// To be called once.
  bool launch() override;

  /// Empty when the child was not launched.
  std::string readDataToEndOfFile() override;

  void waitUntilExit() override;

 private:
  std::string path_;
  std::vector<std::string> arguments_;
  /// Both nil before the launch.
  NSTask* task_ = nil;
  NSFileHandle* output_ = nil;
};

}  // namespace hushbox
