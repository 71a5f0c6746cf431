#pragma once

#include <cstddef>
#include <string>
#include <vector>

#ifdef __OBJC__
#import <AppKit/AppKit.h>
#endif

namespace hushbox::doubles {

/// The menu bar as the desktop shows it. Main thread only.

/// A row of the newest status item's menu.
struct MenuItem {
  std::string title;
  std::string keyEquivalent;
  bool separator = false;
  bool enabled = false;
  /// It has an action, and a target that has not gone and understands it.
  bool actionable = false;
  bool on = false;
};

std::size_t statusItemCount();
std::vector<MenuItem> menuItems();
/// The status item's label for accessibility.
std::string accessibilityLabel();

/// The user opens the menu, and leaves it again. While it is open the loop runs in its tracking
/// mode.
void openMenu();
void closeMenu();
bool isMenuOpen();

/// The user chooses a row, which closes the menu. A row that is greyed ends the process.
void chooseMenuItem(std::size_t index);
void chooseMenuItem(const std::string& title);

/// What was drawn since the last rendering began, in the recording canvas's terms.
std::vector<std::string> drawing();
/// Renders the status item's icon; what its drawing handler said.
bool renderIcon();

#ifdef __OBJC__
/// The newest status item; nil when there is none.
NSStatusItem* statusItem();
bool isTemplate(NSImage* image);
bool isFlipped(NSImage* image);
NSSize size(NSImage* image);
/// Renders an image in a fresh context, or without any; what its drawing handler said.
bool render(NSImage* image);
bool renderWithoutContext(NSImage* image);
#endif

void resetStatusBar();

}  // namespace hushbox::doubles
