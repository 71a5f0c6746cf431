#include "rehearsal/ServerProcess.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <thread>

#include "rehearsal/DeskError.h"
#include "rehearsal/Programs.h"

namespace hushbox::rehearsal {

namespace {

constexpr int cannotExecute = 127;
// Above every number that a child's descriptor can get, so that dup2() never overwrites one of
// them.
constexpr int firstTemporaryDescriptor = 64;

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

std::vector<std::string> assignments(const Environment& environment) {
  std::vector<std::string> result;
  for (const auto& [name, value] : environment) result.push_back(name + "=" + value);
  return result;
}

/// What the child does between fork and exec. In a process with threads only async-signal-safe
/// calls are allowed there: no allocation and no lock.
struct Child {
  pid_t parent;
  int log;
  const std::pair<int, int>* descriptors;
  std::size_t descriptorCount;
  char* const* arguments;
  char* const* environment;

  void setUpDescriptors() const {
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    int firstToClose = STDERR_FILENO + 1;
    for (std::size_t i = 0; i < descriptorCount; ++i) {
      dup2(descriptors[i].first, firstTemporaryDescriptor + static_cast<int>(i));
    }
    for (std::size_t i = 0; i < descriptorCount; ++i) {
      dup2(firstTemporaryDescriptor + static_cast<int>(i), descriptors[i].second);
      firstToClose = std::max(firstToClose, descriptors[i].second + 1);
    }
    close_range(static_cast<unsigned>(firstToClose), ~0U, 0);
  }

  void resetSignals() const {
    for (int signal = 1; signal < NSIG; ++signal) std::signal(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
  }

  [[noreturn]] void execute() const {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(cannotExecute);
    resetSignals();
    setUpDescriptors();
    execve(arguments[0], arguments, environment);
    _exit(cannotExecute);
  }
};

/// Whether the child is in one of the states, which are waitid() options. Does not reap it.
bool changedState(pid_t pid, int states) {
  siginfo_t info{};
  return waitid(P_PID, static_cast<id_t>(pid), &info, states | WNOHANG | WNOWAIT) == 0 &&
         info.si_pid == pid;
}

bool changesStateWithin(pid_t pid, int states, Milliseconds deadline) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  while (!changedState(pid, states)) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(Milliseconds{1});
  }
  return true;
}

}  // namespace

ServerProcess::ServerProcess(Launch launch) : launch_(std::move(launch)) {
  launch_.command.front() = findProgram(launch_.command.front());
  std::vector<std::string> environment = assignments(launch_.environment);
  const std::vector<char*> argumentPointers = pointers(launch_.command);
  const std::vector<char*> environmentPointers = pointers(environment);
  const int log = open(launch_.log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (log < 0) throw DeskError("the log " + launch_.log.string() + " cannot be opened");
  const Child child{getpid(),
                    log,
                    launch_.descriptors.data(),
                    launch_.descriptors.size(),
                    argumentPointers.data(),
                    environmentPointers.data()};
  pid_ = fork();
  if (pid_ == 0) child.execute();
  const int error = errno;
  close(log);
  if (pid_ < 0) throw DeskError(std::string("cannot create a process: ") + std::strerror(error));
  // Parent and child both set it, so that neither has to wait for the other.
  setpgid(pid_, pid_);
}

ServerProcess::~ServerProcess() {
  stop();
}

bool ServerProcess::isRunning() const {
  return !reaped_ && !changedState(pid_, WEXITED);
}

void ServerProcess::stop(Milliseconds deadline) {
  if (reaped_) return;
  signalGroup(SIGTERM);
  signalGroup(SIGCONT);
  changesStateWithin(pid_, WEXITED, deadline);
  killGroupAndReap();
}

void ServerProcess::kill() {
  if (!reaped_) killGroupAndReap();
}

void ServerProcess::killGroupAndReap() {
  // Kill the group before reaping its leader: until then the group's number cannot be reused.
  signalGroup(SIGKILL);
  while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
  reaped_ = true;
}

void ServerProcess::freeze() {
  if (!isRunning()) throw DeskError(launch_.command.front() + " cannot be frozen: it has exited");
  // Stop the main process first: during a vfork it stops only after its child has continued.
  ::kill(pid_, SIGSTOP);
  if (!changesStateWithin(pid_, WSTOPPED, serverTimeout)) {
    throw DeskError(launch_.command.front() + " does not stop");
  }
  signalGroup(SIGSTOP);
}

void ServerProcess::thaw() {
  if (!reaped_) signalGroup(SIGCONT);
}

void ServerProcess::signalGroup(int signal) const {
  ::kill(-pid_, signal);
}

void ServerProcess::waitUntilReady(const std::function<bool()>& predicate, std::string_view awaited,
                                   Milliseconds deadline) const {
  const bool ready =
      holdsWithin([&] { return predicate() || !isRunning(); }, deadline) && isRunning();
  if (ready) return;
  throw DeskError(launch_.command.front() + (isRunning() ? " timed out" : " exited") +
                  " while the desk waited for " + std::string(awaited) + logTail());
}

int ServerProcess::waitForExit(Milliseconds deadline) const {
  const std::string& name = launch_.command.front();
  waitUntil([this] { return !isRunning(); }, deadline, name + " to exit");
  siginfo_t info{};
  waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT);
  if (info.si_code != CLD_EXITED) throw DeskError(name + " was killed by a signal" + logTail());
  return info.si_status;
}

std::string ServerProcess::logTail() const {
  constexpr std::size_t maxBytes = 600;
  std::ifstream log(launch_.log);
  const std::string text((std::istreambuf_iterator<char>(log)), std::istreambuf_iterator<char>());
  if (text.empty()) return "";
  return "; the end of its log: " + text.substr(text.size() - std::min(text.size(), maxBytes));
}

}  // namespace hushbox::rehearsal
