#pragma once

#include <cstdint>

/// The states on the accessibility bus that matter here, by their numbers in AT-SPI.
namespace hushbox::atspi_state {

inline constexpr std::uint32_t active = 1;      ///< Of a window: it has the focus.
inline constexpr std::uint32_t iconified = 15;  ///< Of a window: minimised.
inline constexpr std::uint32_t showing = 25;    ///< On the screen, whatever covers it.

}  // namespace hushbox::atspi_state
