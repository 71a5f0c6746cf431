#pragma once

#include <string_view>
#include <type_traits>

#include "platform/UnifiedLog.h"
#include "support/LogFormat.h"
#include "support/RenderedLog.h"

namespace hushbox {

/// A handle to the unified log for one category, with the application's bundle identifier as
/// subsystem. Literal type: declare handles constexpr. Any thread, while a platform is in scope.
class Log {
 public:
  /// `category` must outlive the handle; pass a string literal.
  explicit constexpr Log(std::string_view category) : category_(category) {}

  /// Writes a record. A format that does not fit the arguments is a compile-time error.
  template <typename... Arguments>
  void info(LogFormat<std::type_identity_t<Arguments>...> format,
            const Arguments&... arguments) const {
    write(LogLevel::info, {format.text(), {argument(arguments)...}});
  }

  template <typename... Arguments>
  void error(LogFormat<std::type_identity_t<Arguments>...> format,
             const Arguments&... arguments) const {
    write(LogLevel::error, {format.text(), {argument(arguments)...}});
  }

 private:
  template <typename T>
  static LogArgument argument(const T& value) {
    if constexpr (std::is_same_v<T, bool>)
      return value;
    else if constexpr (std::is_floating_point_v<T>)
      return static_cast<double>(value);
    else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>)
      return static_cast<std::int64_t>(value);
    else if constexpr (std::is_integral_v<T>)
      return static_cast<std::uint64_t>(value);
    else
      return std::string_view(value);
  }

  void write(LogLevel level, const RenderedLog& text) const;

  std::string_view category_;
};

}  // namespace hushbox
