#include "tests/linux/PrivateJournal.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "platform/linux/SpawnedChildProcesses.h"
#include "rehearsal/Waiting.h"

namespace hushbox {
namespace {

constexpr const char* journald = "/lib/systemd/systemd-journald";
constexpr const char* namespaceFile = "/proc/thread-self/ns/mnt";

}  // namespace

std::unique_ptr<PrivateJournal> PrivateJournal::make(std::string& whyNot) {
  if (access(journald, X_OK) != 0) {
    whyNot = "systemd-journald is not installed.";
    return nullptr;
  }
  std::unique_ptr<PrivateJournal> journal(new PrivateJournal);
  if (!journal->enterNamespace()) {
    whyNot = std::string("A mount namespace for a journal of the test's own is not to be had: ") +
             std::strerror(errno) + ". It needs root.";
    return nullptr;
  }
  journal->start();
  return journal;
}

PrivateJournal::~PrivateJournal() {
  if (daemon_) daemon_->stop();
  daemon_.reset();
  if (!formerNamespace_) return;
  setns(formerNamespace_.get(), CLONE_NEWNS);
  std::filesystem::current_path(workingFolder_);
}

bool PrivateJournal::enterNamespace() {
  Descriptor former(open(namespaceFile, O_RDONLY | O_CLOEXEC));
  if (!former || unshare(CLONE_NEWNS) != 0) return false;
  formerNamespace_ = std::move(former);
  if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return false;
  // Where journald keeps its sockets and its records; what the machine has there stays hidden.
  for (const char* folder : {"/run/systemd", "/run/log", "/var/log/journal"}) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(folder, ignored)) {
      if (std::string_view(folder) == "/var/log/journal") continue;
      if (!std::filesystem::create_directory(folder, ignored)) return false;
    }
    if (mount("tmpfs", folder, "tmpfs", 0, nullptr) != 0) return false;
  }
  return true;
}

void PrivateJournal::start() {
  std::filesystem::create_directories("/run/systemd/journal");
  std::filesystem::create_directories("/run/systemd/journald.conf.d");
  std::filesystem::create_directories("/run/log/journal");
  std::ofstream("/run/systemd/journald.conf.d/test.conf")
      << "[Journal]\nStorage=volatile\nReadKMsg=no\nAudit=no\nForwardToSyslog=no\n"
         "ForwardToWall=no\nRateLimitIntervalSec=0\n";
  daemon_ = std::make_unique<rehearsal::ServerProcess>(
      rehearsal::ServerProcess::Launch{{journald}, {}, scratch_.path() / "journald.log", {}});
  daemon_->waitUntilReady([] { return access("/run/systemd/journal/socket", F_OK) == 0; },
                          "the journal's socket");
}

std::vector<std::string> PrivateJournal::read(std::vector<std::string> arguments) const {
  arguments.insert(arguments.end(), {"--quiet", "--no-pager", "SYSLOG_IDENTIFIER=hushbox"});
  SpawnedChildProcesses processes{ChildProcessRules{}};
  const auto process = processes.make();
  process->setExecutablePath("/usr/bin/journalctl");
  process->setArguments(arguments);
  if (!process->launch()) return {};
  std::istringstream output(process->readDataToEndOfFile());
  process->waitUntilExit();
  std::vector<std::string> lines;
  for (std::string line; std::getline(output, line);) lines.push_back(line);
  return lines;
}

}  // namespace hushbox
