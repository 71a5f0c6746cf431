#import "platform/macos/TaskChildProcessFactory.h"

#import "platform/macos/TaskChildProcess.h"

namespace hushbox {

std::unique_ptr<ChildProcess> TaskChildProcessFactory::make() {
  return std::make_unique<TaskChildProcess>();
}

}  // namespace hushbox
