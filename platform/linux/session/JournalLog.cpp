#include "platform/linux/session/JournalLog.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>
#include <utility>

#include "support/Text.h"

namespace hushbox {
namespace {

/// The level as a number of syslog(3), which the journal uses.
std::string_view priority(LogLevel level) {
  return level == LogLevel::error ? "3" : "6";
}

/// Appends a field in the form of the journal's protocol that allows any value: name, newline,
/// 64-bit little-endian length, value, newline.
void appendField(std::string& record, std::string_view name, std::string_view value) {
  record.append(name).append(1, '\n');
  for (unsigned bits = 0; bits < 64; bits += 8)
    record += static_cast<char>(std::uint64_t{value.size()} >> bits & 0xFF);
  record.append(value).append(1, '\n');
}

/// The text up to the limit in bytes, without an incomplete character at its end.
std::string_view cut(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text;
  std::size_t end = limit;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end);
}

}  // namespace

JournalLog::JournalLog(std::string socketPath, int standardError)
    : socketPath_(std::move(socketPath)),
      standardError_(standardError),
      isTerminal_(isatty(standardError) == 1),
      socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {}

void JournalLog::write(std::string_view subsystem, std::string_view category, LogLevel level,
                       std::string_view text) {
  const std::string escaped = text::escapedForTerminal(cut(text, maxTextBytes));
  const std::string_view printable = cut(escaped, maxTextBytes);
  std::string record;
  appendField(record, "MESSAGE", printable);
  appendField(record, "PRIORITY", priority(level));
  appendField(record, "SYSLOG_IDENTIFIER", "hushbox");
  appendField(record, "HUSHBOX_SUBSYSTEM", subsystem);
  appendField(record, "HUSHBOX_CATEGORY", category);
  if (!sendToJournal(record) || isTerminal_)
    writeLine(std::string(category).append(": ").append(printable).append(1, '\n'));
}

bool JournalLog::sendToJournal(std::string_view record) const {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (socketPath_.size() >= sizeof address.sun_path) return false;
  std::memcpy(address.sun_path, socketPath_.data(), socketPath_.size());
  const auto sent =
      sendto(socket_.get(), record.data(), record.size(), MSG_NOSIGNAL,
             reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(sizeof address));
  // A full journal counts as one: a line on standard error would not help.
  return sent >= 0 || errno == EAGAIN;
}

void JournalLog::writeLine(std::string_view line) {
  const std::lock_guard lock(mutex_);
  while (!line.empty()) {
    pollfd output{standardError_, POLLOUT, 0};
    if (poll(&output, 1, 0) != 1 || !(output.revents & POLLOUT)) return;
    // A pipe that is ready takes this many bytes without blocking.
    const ssize_t count =
        ::write(standardError_, line.data(), std::min<std::size_t>(line.size(), PIPE_BUF));
    if (count < 0 && errno != EINTR) return;
    if (count > 0) line.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace hushbox
