#include "tests/platform/macos/doubles/LogDouble.h"

#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>

#include "tests/platform/macos/runtime/Failure.h"

struct os_log_s {
  std::string subsystem;
  std::string category;
};

namespace hushbox::doubles {
namespace {

std::mutex mutex;
std::vector<UnifiedLogRecord> records;
std::map<std::pair<std::string, std::string>, os_log_s> logs;

/// The arguments as the compiler packs them: two bytes of summary, then kind and privacy, size and
/// bytes of each.
class Arguments {
 public:
  explicit Arguments(const std::uint8_t* buffer) : count_(buffer[1]), next_(buffer + 2) {}

  std::string take() {
    if (count_-- == 0) fail("a log format has more conversions than arguments");
    const unsigned kind = *next_ >> 4;
    const unsigned privacy = *next_ & 0xf;
    const unsigned size = next_[1];
    const std::uint8_t* const bytes = next_ + 2;
    next_ = bytes + size;
    if (kind == string) {
      if (privacy != isPublic) return "<private>";
      const char* text = nullptr;
      std::memcpy(&text, bytes, sizeof text);
      return text ? text : "(null)";
    }
    if (kind != scalar) fail("a log argument of a kind without a double");
    if (privacy == isPrivate) return "<private>";
    if (size == sizeof(std::int32_t)) return std::to_string(value<std::int32_t>(bytes));
    return std::to_string(value<std::int64_t>(bytes));
  }

  bool empty() const { return count_ == 0; }

 private:
  static constexpr unsigned scalar = 0;
  static constexpr unsigned string = 2;
  static constexpr unsigned isPrivate = 1;
  static constexpr unsigned isPublic = 2;

  template <typename T>
  static T value(const std::uint8_t* bytes) {
    T number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
  }

  unsigned count_;
  const std::uint8_t* next_;
};

std::string rendered(const char* format, const std::uint8_t* buffer) {
  Arguments arguments(buffer);
  std::string text;
  for (const char* c = format; *c; ++c) {
    if (*c != '%') {
      text += *c;
    } else if (c[1] == '%') {
      text += *++c;
    } else {
      c += std::strcspn(c, "sdiu@xp");
      if (!*c) fail("a log conversion without a double");
      // Options in braces precede the conversion and may contain its letters.
      text += arguments.take();
    }
  }
  if (!arguments.empty()) fail("a log format has fewer conversions than arguments");
  return text;
}

/// Removes the options in braces from a format.
std::string withoutOptions(const char* format) {
  std::string plain;
  bool inOptions = false;
  for (const char* c = format; *c; ++c) {
    if (c != format && c[-1] == '%' && *c == '{') inOptions = true;
    if (!inOptions) plain += *c;
    if (*c == '}') inOptions = false;
  }
  return plain;
}

}  // namespace

std::vector<UnifiedLogRecord> logRecords() {
  const std::lock_guard lock(mutex);
  return records;
}

void resetLog() {
  const std::lock_guard lock(mutex);
  records.clear();
}

}  // namespace hushbox::doubles

using namespace hushbox::doubles;

extern "C" {

os_log_s* os_log_create(const char* subsystem, const char* category) {
  if (!subsystem || !category) fail("os_log_create was given no subsystem or no category");
  const std::lock_guard lock(mutex);
  os_log_s& log = logs[{subsystem, category}];
  log = {subsystem, category};
  return &log;
}

bool os_log_type_enabled(os_log_s* log, std::uint8_t) {
  if (!log) fail("a record without a log");
  return true;
}

void _os_log_impl(void*, os_log_s* log, std::uint8_t type, const char* format, std::uint8_t* buffer,
                  std::uint32_t) {
  const std::string text = rendered(withoutOptions(format).c_str(), buffer);
  const std::lock_guard lock(mutex);
  records.push_back({log->subsystem, log->category, type, text});
}
}
