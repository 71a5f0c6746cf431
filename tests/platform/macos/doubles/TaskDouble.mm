#include "tests/platform/macos/doubles/TaskDouble.h"

#import <Foundation/Foundation.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#import "tests/platform/macos/doubles/FoundationValues.h"
#include "tests/platform/macos/doubles/RunLoopDouble.h"

namespace hushbox::doubles {
namespace {

std::mutex mutex;
std::condition_variable ended;
std::map<std::pair<std::string, std::vector<std::string>>, TaskScript> scripts;
std::size_t launches = 0;
/// Incremented by every call of `endHangingTasks`.
unsigned long endings = 0;
/// Threads that wait for a child.
int hanging = 0;
/// Descriptors must not leak into another child that starts at the same time.
std::mutex launching;

/// Blocks until `endHangingTasks` was called after the child was launched.
void hang(unsigned long endingsAtLaunch) {
  std::unique_lock lock(mutex);
  // Not parked for a moment either: the loop would take the thread for one that is blocked.
  if (endings != endingsAtLaunch) return;
  ++hanging;
  {
    const Parked parked;
    ended.wait(lock, [&] { return endings != endingsAtLaunch; });
  }
  --hanging;
  ended.notify_all();
}

}  // namespace

void scriptTask(const std::string& path, const std::vector<std::string>& arguments,
                TaskScript script) {
  const std::lock_guard lock(mutex);
  scripts[{path, arguments}] = std::move(script);
}

void endHangingTasks() {
  std::unique_lock lock(mutex);
  ++endings;
  ended.notify_all();
  // The waiting threads count as busy again when this returns, so that the loop waits for them.
  ended.wait(lock, [] { return hanging == 0; });
}

std::size_t launchedTasks() {
  const std::lock_guard lock(mutex);
  return launches;
}

void resetTasks() {
  endHangingTasks();
  const std::lock_guard lock(mutex);
  scripts.clear();
  launches = 0;
}

}  // namespace hushbox::doubles

using namespace hushbox::doubles;

@interface NSURL () {
 @public
  std::string location;
}
@end
@implementation NSURL
+ (instancetype)fileURLWithPath:(NSString*)path {
  if (!path.length) fail("+[NSURL fileURLWithPath:] was given no path");
  NSURL* made = [[NSURL alloc] init];
  made->location = text(path);
  return made;
}
- (id)copyWithZone:(struct _NSZone*)zone {
  (void)zone;
  return self;
}
@end

@interface NSFileHandle () {
 @public
  int descriptor;
  /// What a scripted child writes.
  std::optional<TaskScript> script;
  unsigned long endingsAtLaunch;
}
@end
@implementation NSFileHandle
- (NSData*)readDataToEndOfFileAndReturnError:(NSError**)error {
  (void)error;
  if (script) {
    if (script->hangs) hang(endingsAtLaunch);
    return data(std::exchange(script->output, {}));
  }
  std::string bytes;
  char buffer[4096];
  for (ssize_t count; (count = read(descriptor, buffer, sizeof buffer)) > 0;) {
    bytes.append(buffer, static_cast<std::size_t>(count));
  }
  return data(std::move(bytes));
}
- (void)dealloc {
  if (descriptor >= 0) close(descriptor);
}
@end

@implementation NSPipe {
  NSFileHandle* reading;
  NSFileHandle* writing;
}
+ (NSPipe*)pipe {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return nil;
  NSPipe* made = [[NSPipe alloc] init];
  made->reading = [[NSFileHandle alloc] init];
  made->reading->descriptor = ends[0];
  made->writing = [[NSFileHandle alloc] init];
  made->writing->descriptor = ends[1];
  return made;
}
- (NSFileHandle*)fileHandleForReading {
  return reading;
}
- (NSFileHandle*)fileHandleForWriting {
  return writing;
}
@end

@implementation NSTask {
  pid_t child;
  int status;
  bool launched;
  std::optional<TaskScript> script;
  unsigned long endingsAtLaunch;
}
@synthesize executableURL, arguments, standardInput, standardOutput, standardError;
- (BOOL)launchAndReturnError:(NSError**)failure {
  if (launched) fail("an NSTask was launched twice");
  if (!executableURL) fail("an NSTask was launched without an executable");
  std::vector<std::string> words;
  for (NSString* each in arguments) words.push_back(text(each));
  const std::string path = executableURL->location;
  {
    const std::lock_guard lock(mutex);
    const auto found = scripts.find({path, words});
    if (found != scripts.end()) script = found->second;
  }
  NSPipe* input = standardInput;
  NSPipe* output = standardOutput;
  NSPipe* failures = standardError;
  if (!script && (std::filesystem::is_directory(path) || access(path.c_str(), X_OK) != 0)) {
    if (failure) *failure = error("The file doesn't exist.");
    return NO;
  }
  launched = true;
  {
    const std::lock_guard lock(mutex);
    ++launches;
    endingsAtLaunch = endings;
  }
  if (script) {
    if (output) {
      output.fileHandleForReading->script = script;
      output.fileHandleForReading->endingsAtLaunch = endingsAtLaunch;
    }
    return YES;
  }
  std::vector<char*> argv{const_cast<char*>(path.c_str())};
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  const std::lock_guard lock(launching);
  const int written = output ? output.fileHandleForWriting->descriptor : -1;
  child = fork();
  if (child == 0) {
    if (input) dup2(input.fileHandleForReading->descriptor, STDIN_FILENO);
    if (written >= 0) dup2(written, STDOUT_FILENO);
    if (failures) dup2(failures.fileHandleForWriting->descriptor, STDERR_FILENO);
    execv(argv.front(), argv.data());
    _exit(127);
  }
  // Close the parent's end, so that the pipe closes when the child exits.
  if (written >= 0) {
    close(written);
    output.fileHandleForWriting->descriptor = -1;
  }
  return child > 0;
}
- (void)waitUntilExit {
  if (!launched) fail("-[NSTask waitUntilExit] before the launch");
  if (script) {
    if (script->hangs) hang(endingsAtLaunch);
    return;
  }
  if (child > 0) waitpid(std::exchange(child, 0), &status, 0);
}
- (void)dealloc {
  // The system's own monitor reaps a child that was not waited for.
  if (child > 0) waitpid(child, nullptr, WNOHANG);
}
@end
