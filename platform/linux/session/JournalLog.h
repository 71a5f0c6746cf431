#pragma once

#include <unistd.h>

#include <mutex>
#include <string>
#include <string_view>

#include "platform/UnifiedLog.h"
#include "platform/linux/Descriptor.h"

namespace hushbox {

/// The unified log as records of the systemd journal, with the fields HUSHBOX_SUBSYSTEM and
/// HUSHBOX_CATEGORY, sent in the journal's own protocol.
///
/// Where no journal takes the record, and also where standard error is a terminal with somebody
/// watching, "category: text" goes to standard error. Control characters are spelt out, so that a
/// record is one line and cannot drive the terminal. Never waits for the reader: a record that
/// nobody takes at once is dropped. Any thread.
class JournalLog final : public UnifiedLog {
 public:
  static constexpr const char* journalSocket = "/run/systemd/journal/socket";

  /// In bytes; a longer text is cut there. Well below what a journal takes in one datagram.
  static constexpr std::size_t longestText = std::size_t{64} << 10;

  explicit JournalLog(std::string socketPath = journalSocket, int standardError = STDERR_FILENO);

  void write(std::string_view subsystem, std::string_view category, LogLevel level,
             std::string_view text) override;

 private:
  bool sendToJournal(std::string_view record) const;
  void writeLine(std::string_view line);

  const std::string socketPath_;
  const int standardError_;
  const bool watched_;
  const Descriptor socket_;
  /// Keeps the lines whole.
  std::mutex mutex_;
};

}  // namespace hushbox
