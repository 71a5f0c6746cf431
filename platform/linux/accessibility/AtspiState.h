#pragma once

#include <cstdint>

/// The states of the accessibility bus that mean something to us, by the figures of its interface.
namespace hushbox::atspi_state {

inline constexpr std::uint32_t iconified = 15;  ///< Of a window: minimised.
inline constexpr std::uint32_t showing = 25;    ///< On the screen, whatever lies over it.

}  // namespace hushbox::atspi_state
