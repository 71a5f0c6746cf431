#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>
#include <variant>

namespace hushbox {

/// One argument of a log record, widened to the type that its conversion prints.
using LogArgument = std::variant<bool, std::int64_t, std::uint64_t, double, std::string_view>;

namespace log_format {

/// The kinds of conversion and of argument. `none` marks the end of a format.
enum class Kind { none, text, boolean, signed32, unsigned32, signed64, floating, malformed };

/// One conversion in a format: its offset and length in bytes, and its kind.
struct Conversion {
  std::size_t position;
  std::size_t length;
  Kind kind;
};

/// Returns the first conversion at or after offset `from`, or one of kind `none`.
constexpr Conversion nextConversion(std::string_view format, std::size_t from) {
  struct Known {
    std::string_view word;
    Kind kind;
  };
  constexpr Known known[] = {{"%{public}s", Kind::text}, {"%{bool}d", Kind::boolean},
                             {"%d", Kind::signed32},     {"%u", Kind::unsigned32},
                             {"%lld", Kind::signed64},   {"%f", Kind::floating}};
  const auto position = format.find('%', from);
  if (position == std::string_view::npos) return {format.size(), 0, Kind::none};
  for (const Known& one : known) {
    if (format.substr(position).starts_with(one.word)) return {position, one.word.size(), one.kind};
  }
  return {position, 1, Kind::malformed};
}

/// Returns the kind of conversion that prints a `T`.
template <typename T>
constexpr Kind kindOf() {
  using Plain = std::remove_cvref_t<T>;
  if constexpr (std::is_same_v<Plain, bool>)
    return Kind::boolean;
  else if constexpr (std::is_floating_point_v<Plain>)
    return Kind::floating;
  else if constexpr (std::is_integral_v<Plain> && sizeof(Plain) == 8 && std::is_signed_v<Plain>)
    return Kind::signed64;
  else if constexpr (std::is_integral_v<Plain> && sizeof(Plain) == 4)
    return std::is_signed_v<Plain> ? Kind::signed32 : Kind::unsigned32;
  else if constexpr (std::is_convertible_v<Plain, std::string_view>)
    return Kind::text;
  else
    return Kind::malformed;
}

/// Whether the conversions of `format` take exactly these argument types, in this order.
template <typename... Arguments>
constexpr bool matches(std::string_view format) {
  constexpr Kind wanted[] = {kindOf<Arguments>()..., Kind::none};
  std::size_t from = 0;
  for (const Kind kind : wanted) {
    const Conversion found = nextConversion(format, from);
    if (found.kind != kind || kind == Kind::malformed) return false;
    from = found.position + found.length;
  }
  return true;
}

void formatDoesNotMatchItsArguments();  // Never defined; its name appears in the compiler's error.

}  // namespace log_format

/// A format string in the syntax of macOS's unified log, checked against its arguments at compile
/// time: %{public}s takes text, %{bool}d a bool, %d and %u a signed and an unsigned 32-bit integer,
/// %lld a signed 64-bit integer, and %f a floating-point number.
template <typename... Arguments>
class LogFormat {
 public:
  template <typename Text>
  requires std::is_convertible_v<const Text&, std::string_view>
  // NOLINTNEXTLINE(google-explicit-constructor): callers pass a plain format string.
  consteval LogFormat(const Text& format) : format_(format) {
    if (!log_format::matches<Arguments...>(format_)) log_format::formatDoesNotMatchItsArguments();
  }

  std::string_view text() const { return format_; }

 private:
  std::string_view format_;
};

}  // namespace hushbox
