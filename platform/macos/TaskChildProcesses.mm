#import "platform/macos/TaskChildProcesses.h"

#import "platform/macos/TaskChildProcess.h"

namespace hushbox {

std::unique_ptr<ChildProcess> TaskChildProcesses::make() {
  return std::make_unique<TaskChildProcess>();
}

}  // namespace hushbox
