#pragma once

#include <cstddef>
#include <string>
#include <vector>

#ifdef __OBJC__
#import <AppKit/AppKit.h>
#endif

namespace hushbox::doubles {

/// The menu bar as a user sees it. Main thread only.

/// A row of the menu of the newest status item.
struct MenuItem {
  std::string title;
  std::string keyEquivalent;
  bool separator = false;
  bool enabled = false;
  /// It has an action and a live target that responds to it.
  bool actionable = false;
  bool on = false;
};

std::size_t statusItemCount();
std::vector<MenuItem> menuItems();
/// The accessibility label of the status item.
std::string accessibilityLabel();

/// The user opens and closes the menu. While it is open the loop runs in its tracking mode.
void openMenu();
void closeMenu();
bool isMenuOpen();

/// The user chooses a row, which closes the menu. Choosing a disabled row ends the process.
void chooseMenuItem(std::size_t index);
void chooseMenuItem(const std::string& title);

/// Returns what the last rendering drew, in the format of RecordingCanvas.
std::vector<std::string> drawing();
/// Renders the status item's icon; returns the result of its drawing handler.
bool renderIcon();

#ifdef __OBJC__
/// Returns the newest status item; nil if there is none.
NSStatusItem* statusItem();
bool isTemplate(NSImage* image);
bool isFlipped(NSImage* image);
NSSize size(NSImage* image);
/// Renders an image in a new context, or without one; returns the result of its drawing handler.
bool render(NSImage* image);
bool renderWithoutContext(NSImage* image);
#endif

void resetStatusBar();

}  // namespace hushbox::doubles
