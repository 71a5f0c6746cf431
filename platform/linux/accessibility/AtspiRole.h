#pragma once

#include <cstdint>

/// The roles on the accessibility bus that matter here, by their numbers in AT-SPI.
namespace hushbox::atspi_role {

inline constexpr std::uint32_t invalid = 0;  ///< Of an object that has been destroyed.
inline constexpr std::uint32_t checkBox = 7;
inline constexpr std::uint32_t dialog = 16;
inline constexpr std::uint32_t frame = 23;
inline constexpr std::uint32_t pushButton = 43;
inline constexpr std::uint32_t toggleButton = 62;
inline constexpr std::uint32_t window = 69;
inline constexpr std::uint32_t application = 75;
inline constexpr std::uint32_t documentFrame = 82;
inline constexpr std::uint32_t documentWeb = 95;
inline constexpr std::uint32_t audio = 106;
inline constexpr std::uint32_t video = 107;
inline constexpr std::uint32_t pushButtonMenu = 129;
inline constexpr std::uint32_t switchControl = 130;

/// Whether the object's controls are not those of the document around it: a document nested in it,
/// which counts by its own address, or a media player, whose buttons are named "mute" too.
constexpr bool isForeignContainer(std::uint32_t role) {
  return role == documentFrame || role == documentWeb || role == audio || role == video;
}

/// The role's name in the accessibility tree.
constexpr const char* name(std::uint32_t role) {
  switch (role) {
    case pushButton:
    case toggleButton:
    case pushButtonMenu:
      return "AXButton";
    case checkBox:
    case switchControl:
      return "AXCheckBox";
    case application:
      return "AXApplication";
    case frame:
    case window:
    case dialog:
      return "AXWindow";
    case documentFrame:
    case documentWeb:
      return "AXWebArea";
    default:
      return "AXGroup";
  }
}

}  // namespace hushbox::atspi_role
