#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace hushbox {

/// Aborts with the condition's text if it does not hold, which the fuzzer reports as a finding. Not
/// an assertion: it holds in every build.
#define HUSHBOX_REQUIRE(condition)                              \
  do {                                                          \
    if (!(condition)) ::hushbox::requirementFailed(#condition); \
  } while (false)

[[noreturn]] inline void requirementFailed(const char* condition) {
  std::fprintf(stderr, "does not hold: %s\n", condition);
  std::abort();
}

/// Takes values from the front of a fuzzer's input; what is missing at its end is 0 or empty.
class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size)
      : left_(reinterpret_cast<const char*>(data), size) {}

  std::uint8_t takeByte() {
    if (left_.empty()) return 0;
    const char byte = left_.front();
    left_.remove_prefix(1);
    return static_cast<std::uint8_t>(byte);
  }

  /// Takes what precedes the next zero byte, and that byte.
  std::string_view takeText() {
    const std::string_view text = left_.substr(0, left_.find('\0'));
    left_.remove_prefix(text.size() < left_.size() ? text.size() + 1 : text.size());
    return text;
  }

  std::string_view rest() const { return left_; }

 private:
  std::string_view left_;
};

}  // namespace hushbox
