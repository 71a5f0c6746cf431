#include "tests/platform/macos/doubles/StatusBarDouble.h"

#include <algorithm>

#import "tests/platform/macos/doubles/FoundationValues.h"
#import "tests/platform/macos/doubles/GraphicsDouble.h"
#include "tests/platform/macos/doubles/RunLoopDouble.h"
#include "tests/platform/macos/runtime/LiveObjects.h"

extern "C" void objc_msgSend();

using namespace hushbox::doubles;

@implementation NSMenuItem {
 @public
  bool separator;
  NSString* titleValue;
  BOOL enabledValue;
}
@synthesize state, target, action, keyEquivalent, keyEquivalentModifierMask, representedObject;
- (instancetype)initWithTitle:(NSString*)string action:(SEL)selector keyEquivalent:(NSString*)key {
  requireMainThread("-[NSMenuItem initWithTitle:action:keyEquivalent:]");
  if (!string || !key) fail("a menu item was made with nil for its title or key equivalent");
  if ((self = [super init])) {
    titleValue = string;
    enabledValue = YES;
    self.action = selector;
    self.keyEquivalent = key;
    self.keyEquivalentModifierMask = NSEventModifierFlagCommand;
  }
  return self;
}
+ (NSMenuItem*)separatorItem {
  NSMenuItem* made = [[NSMenuItem alloc] initWithTitle:@"" action:nil keyEquivalent:@""];
  made->separator = true;
  return made;
}
- (NSString*)title {
  return titleValue;
}
- (void)setTitle:(NSString*)title {
  requireMainThread("-[NSMenuItem setTitle:]");
  if (!title) fail("-[NSMenuItem setTitle:] was given nil");
  if (separator) fail("a separator was given a title");
  titleValue = title;
}
- (BOOL)isEnabled {
  return enabledValue;
}
- (void)setEnabled:(BOOL)enabled {
  requireMainThread("-[NSMenuItem setEnabled:]");
  enabledValue = enabled;
}
@end

@implementation NSMenu {
 @public
  std::vector<NSMenuItem*> items;
}
@synthesize autoenablesItems;
- (instancetype)initWithTitle:(NSString*)title {
  requireMainThread("-[NSMenu initWithTitle:]");
  if (!title) fail("a menu was made with nil for its title");
  if ((self = [super init])) self.autoenablesItems = YES;
  return self;
}
- (void)insertItem:(NSMenuItem*)item atIndex:(NSInteger)index {
  requireMainThread("-[NSMenu insertItem:atIndex:]");
  if (!item) fail("nil was added to a menu");
  if (index < 0 || index > self.numberOfItems) fail("an item was inserted outside its menu");
  if (std::find(items.begin(), items.end(), item) != items.end()) {
    fail("an item was added to its menu a second time");
  }
  items.insert(items.begin() + index, item);
}
- (void)removeItemAtIndex:(NSInteger)index {
  requireMainThread("-[NSMenu removeItemAtIndex:]");
  if (index < 0 || index >= self.numberOfItems) fail("an item was removed that is not in its menu");
  items.erase(items.begin() + index);
}
- (NSMenuItem*)itemAtIndex:(NSInteger)index {
  if (index < 0 || index >= self.numberOfItems)
    fail("an item was requested that is not in its menu");
  return items[static_cast<std::size_t>(index)];
}
- (NSInteger)numberOfItems {
  return static_cast<NSInteger>(items.size());
}
- (NSArray<NSMenuItem*>*)itemArray {
  return [NSArray arrayWithObjects:items.data() count:items.size()];
}
@end

@implementation NSStatusBarButton {
 @public
  NSString* label;
  NSImage* imageValue;
}
@synthesize toolTip;
- (NSImage*)image {
  return imageValue;
}
- (void)setImage:(NSImage*)image {
  requireMainThread("-[NSStatusBarButton setImage:]");
  imageValue = image;
}
- (void)setAccessibilityLabel:(NSString*)accessibilityLabel {
  requireMainThread("-[NSStatusBarButton setAccessibilityLabel:]");
  label = accessibilityLabel;
}
@end

@implementation NSStatusItem {
  NSStatusBarButton* ownButton;
  NSString* name;
}
@synthesize menu, length;
- (NSString*)autosaveName {
  return name;
}
- (void)setAutosaveName:(NSString*)autosaveName {
  requireMainThread("-[NSStatusItem setAutosaveName:]");
  name = autosaveName ? autosaveName : @"Item-0";
}
- (NSStatusBarButton*)button {
  requireMainThread("-[NSStatusItem button]");
  if (!ownButton) ownButton = [[NSStatusBarButton alloc] init];
  return ownButton;
}
@end

namespace {

/// As on a Mac, the status bar does not own its items; their creator does.
std::vector<__weak NSStatusItem*> statusItems;
bool menuOpen = false;

void forgetEnded() {
  std::erase_if(statusItems, [](__weak NSStatusItem* item) { return item == nil; });
}

NSMenu* currentMenu() {
  NSMenu* menu = statusItem().menu;
  if (!menu) fail("there is no status item with a menu");
  return menu;
}

}  // namespace

@implementation NSStatusBar
+ (NSStatusBar*)systemStatusBar {
  requireMainThread("+[NSStatusBar systemStatusBar]");
  static NSStatusBar* only = [] {
    NSStatusBar* made = [[NSStatusBar alloc] init];
    keepForever((__bridge void*)made);
    return made;
  }();
  return only;
}
- (NSStatusItem*)statusItemWithLength:(CGFloat)length {
  NSStatusItem* item = [[NSStatusItem alloc] init];
  item.length = length;
  statusItems.push_back(item);
  return item;
}
- (void)removeStatusItem:(NSStatusItem*)item {
  requireMainThread("-[NSStatusBar removeStatusItem:]");
  if (std::erase_if(statusItems, [item](__weak NSStatusItem* each) { return each == item; }) == 0) {
    fail("a status item was removed that is not in the menu bar");
  }
}
@end

namespace hushbox::doubles {

NSStatusItem* statusItem() {
  forgetEnded();
  return statusItems.empty() ? nil : statusItems.back();
}

std::size_t statusItemCount() {
  forgetEnded();
  return statusItems.size();
}

std::vector<MenuItem> menuItems() {
  std::vector<MenuItem> shown;
  @autoreleasepool {
    NSMenu* menu = statusItem().menu;
    if (!menu) return shown;
    for (NSMenuItem* item : menu->items) {
      id target = item.target;
      const bool actionable = item.action && target && [target respondsToSelector:item.action];
      const bool enabled = menu.autoenablesItems ? actionable : item.enabled;
      shown.push_back({text(item.title), text(item.keyEquivalent), item->separator, enabled,
                       actionable, item.state == NSControlStateValueOn});
    }
  }
  return shown;
}

std::string accessibilityLabel() {
  @autoreleasepool {
    NSStatusItem* item = statusItem();
    return item ? text(item.button->label) : "";
  }
}

void openMenu() {
  if (menuOpen) fail("the menu is open already");
  currentMenu();
  menuOpen = true;
  setTracking(true);
}

void closeMenu() {
  if (!menuOpen) fail("the menu is not open");
  menuOpen = false;
  setTracking(false);
}

bool isMenuOpen() {
  return menuOpen;
}

void chooseMenuItem(std::size_t index) {
  const auto shown = menuItems();
  if (index >= shown.size() || !shown[index].enabled || shown[index].separator) {
    fail("a row was chosen that is disabled or absent");
  }
  // Holds neither the item nor its target, so that a target which its own action destroys is seen.
  __unsafe_unretained id target = nil;
  SEL action = nullptr;
  @autoreleasepool {
    NSMenuItem* item = currentMenu()->items[index];
    if (menuOpen) closeMenu();
    target = item.target;
    action = item.action;
    if (!action) return;
    if (!target) fail("the target of a menu item, which does not keep it alive, is gone");
  }
  @autoreleasepool {
    using Action = void (*)(void*, SEL, void*);
    // No sender: without optimisation a method keeps its arguments alive.
    reinterpret_cast<Action>(objc_msgSend)((__bridge void*)target, action, nullptr);
  }
}

void chooseMenuItem(const std::string& title) {
  const auto shown = menuItems();
  const auto found = std::find_if(shown.begin(), shown.end(),
                                  [&](const MenuItem& item) { return item.title == title; });
  chooseMenuItem(static_cast<std::size_t>(found - shown.begin()));
}

bool renderIcon() {
  @autoreleasepool {
    NSStatusItem* item = statusItem();
    return item && render(item.button.image);
  }
}

void resetStatusBar() {
  statusItems.clear();
  menuOpen = false;
  clearDrawing();
}

}  // namespace hushbox::doubles
