#include "platform/linux/menubar/PanelText.h"

#include "support/Text.h"

namespace hushbox {

std::string panelText(std::string_view text) {
  std::string withoutNul(text);
  std::erase(withoutNul, '\0');
  return text::escapedForTerminal(withoutNul);
}

}  // namespace hushbox
