#include "platform/linux/processes/SpawnedChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

namespace hushbox {
namespace {

using Clock = std::chrono::steady_clock;

/// How long to wait for a killed child to exit. One that the kernel cannot end yet, because it
/// waits for a broken disk, is left behind.
constexpr std::chrono::milliseconds killTimeout{1'000};

/// Waits until `descriptor` is readable; returns false at the deadline or when the program ends.
bool becomesReadable(int descriptor, const ChildProcessRules& rules, Clock::time_point deadline) {
  std::array<pollfd, 2> watched{{{descriptor, POLLIN, 0}, {rules.ending.get(), POLLIN, 0}}};
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) return false;
    const int ready = poll(watched.data(), watched.size(), static_cast<int>(left.count()));
    if (ready < 0 && errno == EINTR) continue;
    return ready > 0 && !watched[1].revents;
  }
}

/// The spawn attributes: a process group of its own, and signals at the defaults that a program
/// expects, whatever we or our libraries have changed.
class Attributes {
 public:
  Attributes() {
    sigset_t none, reset;
    sigemptyset(&none);
    sigemptyset(&reset);
    sigaddset(&reset, SIGPIPE);
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setpgroup(&attributes_, 0);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &reset);
    posix_spawnattr_setflags(
        &attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~Attributes() { posix_spawnattr_destroy(&attributes_); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;

  const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_;
};

/// The file actions: standard output goes to the pipe, and all descriptors except the standard
/// streams are closed, even those that a library opened without CLOEXEC.
class FileActions {
 public:
  explicit FileActions(int standardOutput) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_adddup2(&actions_, standardOutput, STDOUT_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
  }
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;

  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

}  // namespace

SpawnedChildProcess::~SpawnedChildProcess() {
  if (!pid_) return;
  killGroup();
  waitUntilExit();
}

bool SpawnedChildProcess::launch() {
  deadline_ = Clock::now() + rules_->timeout;
  pollfd ending{rules_->ending.get(), POLLIN, 0};
  if (pid_ || poll(&ending, 1, 0) != 0) return false;

  const auto standIn = rules_->standIns.find(path_);
  std::vector<std::string> words{standIn == rules_->standIns.end() ? path_ : standIn->second};
  words.insert(words.end(), arguments_.begin(), arguments_.end());
  std::vector<char*> arguments;
  for (std::string& word : words) {
    // A NUL would truncate the word, and perhaps run another file.
    if (word.find('\0') != std::string::npos) return false;
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);

  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return false;
  Descriptor readingEnd(ends[0]);
  const Descriptor writingEnd(ends[1]);
  if (posix_spawn(&pid_, words.front().c_str(), FileActions(writingEnd.get()).get(),
                  Attributes().get(), arguments.data(), environ) != 0) {
    pid_ = 0;
    return false;
  }
  output_ = std::move(readingEnd);
  return true;
}

std::string SpawnedChildProcess::readDataToEndOfFile() {
  const Descriptor output = std::move(output_);
  std::string data;
  std::array<char, 4096> chunk;
  while (output && data.size() <= rules_->maxOutputBytes &&
         becomesReadable(output.get(), *rules_, deadline_)) {
    const ssize_t count = read(output.get(), chunk.data(), chunk.size());
    if (count == 0) return data;
    if (count > 0) data.append(chunk.data(), static_cast<std::size_t>(count));
  }
  killGroup();
  return {};
}

void SpawnedChildProcess::waitUntilExit() {
  if (!pid_) return;
  const Descriptor exit(static_cast<int>(syscall(SYS_pidfd_open, pid_, 0)));
  // Without a descriptor there is no way to wait with a timeout, so kill it now.
  if (!exit || !becomesReadable(exit.get(), *rules_, deadline_)) killGroup();
  pollfd ended{exit.get(), POLLIN, 0};
  while (poll(&ended, 1, static_cast<int>(killTimeout.count())) < 0 && errno == EINTR) {
  }
  waitpid(pid_, nullptr, WNOHANG);
  pid_ = 0;
}

void SpawnedChildProcess::killGroup() const {
  if (pid_) kill(-pid_, SIGKILL);
}

}  // namespace hushbox
