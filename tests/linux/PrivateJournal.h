#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/Descriptor.h"
#include "rehearsal/ScratchFolder.h"
#include "rehearsal/ServerProcess.h"

namespace hushbox {

/// A real systemd-journald that only the calling thread, and the threads and processes that it
/// starts, can see: the thread gets a mount namespace of its own for as long as this lives.
///
/// Needs the right to make one; without it, `make()` says why there is none.
class PrivateJournal {
 public:
  /// The journal, or the sentence for the skipped test.
  static std::unique_ptr<PrivateJournal> make(std::string& whyNot);
  ~PrivateJournal();
  PrivateJournal(const PrivateJournal&) = delete;
  PrivateJournal& operator=(const PrivateJournal&) = delete;

  /// What journalctl prints for all records of the program with these arguments, a line an element.
  std::vector<std::string> read(std::vector<std::string> arguments) const;

 private:
  PrivateJournal() = default;
  bool enterNamespace();
  void start();

  rehearsal::ScratchFolder scratch_;
  std::filesystem::path workingFolder_ = std::filesystem::current_path();
  Descriptor formerNamespace_;
  std::unique_ptr<rehearsal::ServerProcess> daemon_;
};

}  // namespace hushbox
