#import "platform/macos/TaskChildProcess.h"

#import "platform/macos/StringConversion.h"

namespace hushbox {
namespace {

/// Whether the system passes on the whole text: it stops at a zero byte.
bool isWhole(const std::string& text) {
  return text.find('\0') == std::string::npos;
}

}  // namespace

bool TaskChildProcess::launch() {
  // NSTask raises an exception if it has no path.
  if (task_ || path_.empty() || !isWhole(path_)) return false;
  @autoreleasepool {
    NSTask* task = [[NSTask alloc] init];
    NSPipe* pipe = [NSPipe pipe];
    if (!pipe) return false;
    NSMutableArray<NSString*>* arguments = [[NSMutableArray alloc] init];
    for (const std::string& argument : arguments_) {
      if (!isWhole(argument)) return false;
      [arguments addObject:stringFromUtf8(argument)];
    }
    task.executableURL = [NSURL fileURLWithPath:stringFromUtf8(path_)];
    task.arguments = arguments;
    task.standardOutput = pipe;
    if (![task launchAndReturnError:nil]) return false;
    task_ = task;
    output_ = pipe.fileHandleForReading;
    return true;
  }
}

std::string TaskChildProcess::readDataToEndOfFile() {
  @autoreleasepool {
    NSData* data = [output_ readDataToEndOfFileAndReturnError:nil];
    if (!data.length) return {};
    return {static_cast<const char*>(data.bytes), data.length};
  }
}

void TaskChildProcess::waitUntilExit() {
  @autoreleasepool {
    [task_ waitUntilExit];
  }
}

}  // namespace hushbox
