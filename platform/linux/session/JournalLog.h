#pragma once

#include <unistd.h>

#include <mutex>
#include <string>
#include <string_view>

#include "platform/UnifiedLog.h"
#include "platform/linux/Descriptor.h"

namespace hushbox {

/// The unified log as records of the systemd journal, sent in the journal's own protocol, with the
/// fields HUSHBOX_SUBSYSTEM and HUSHBOX_CATEGORY.
///
/// Where no journal accepts the record, and also where standard error is a terminal, it writes
/// "category: text" to standard error. Control characters are escaped, so that a record is one line
/// and cannot control the terminal. It never blocks: a record that cannot be written at once is
/// dropped. Any thread.
class JournalLog final : public UnifiedLog {
 public:
  static constexpr const char* journalSocket = "/run/systemd/journal/socket";

  /// A longer text is truncated. Well below what a journal accepts in one datagram.
  static constexpr std::size_t maxTextBytes = std::size_t{64} << 10;

  explicit JournalLog(std::string socketPath = journalSocket, int standardError = STDERR_FILENO);

  void write(std::string_view subsystem, std::string_view category, LogLevel level,
             std::string_view text) override;

 private:
  bool sendToJournal(std::string_view record) const;
  void writeLine(std::string_view line);

  const std::string socketPath_;
  const int standardError_;
  const bool isTerminal_;
  const Descriptor socket_;
  /// Keeps lines of several threads apart.
  std::mutex mutex_;
};

}  // namespace hushbox
