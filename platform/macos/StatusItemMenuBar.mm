#import "platform/macos/StatusItemMenuBar.h"

#import <AppKit/AppKit.h>

#include <utility>

#import "platform/macos/CGCanvas.h"
#import "platform/macos/HushboxRowAction.h"
#import "platform/macos/StringConversion.h"

namespace hushbox {
namespace {

using Kind = MenuRow::Kind;

bool isCommand(const MenuRow& row) {
  return row.kind == Kind::button || row.kind == Kind::toggle;
}

NSString* title(const MenuRow& row) {
  NSString* text = stringFromUtf8(row.text);
  if (!row.localized) return text;
  return [NSBundle.mainBundle localizedStringForKey:text value:nil table:nil];
}

NSMenuItem* makeItem(const MenuRow& row) {
  if (row.kind == Kind::separator) return [NSMenuItem separatorItem];
  NSMenuItem* item = [[NSMenuItem alloc] initWithTitle:@"" action:nil keyEquivalent:@""];
  if (!isCommand(row)) return item;
  HushboxRowAction* action = [[HushboxRowAction alloc] init];
  item.representedObject = action;
  item.target = action;
  item.action = @selector(run:);
  return item;
}

void edit(NSMenuItem* item, const MenuRow& row) {
  if (row.kind == Kind::separator) return;
  item.title = title(row);
  item.enabled = isCommand(row) && row.enabled;
  if (!isCommand(row)) return;
  static_cast<HushboxRowAction*>(item.representedObject).onChoice = row.action;
  item.state = row.kind == Kind::toggle && row.on ? NSControlStateValueOn : NSControlStateValueOff;
  item.keyEquivalent = stringFromUtf8(row.keyEquivalent);
  item.keyEquivalentModifierMask = NSEventModifierFlagCommand;
}

NSImage* nativeImage(const Image& icon) {
  // The image may be drawn long after this call, so the block must not reference `icon`.
  const auto draw = icon.draw;
  NSImage* image = [NSImage imageWithSize:NSMakeSize(icon.width, icon.height)
                                  flipped:icon.flipped
                           drawingHandler:^BOOL(NSRect) {
                             if (!draw) return NO;
                             CGContextRef context = NSGraphicsContext.currentContext.CGContext;
                             if (!context) return draw(nullptr);
                             CGCanvas canvas(context);
                             return draw(&canvas);
                           }];
  [image setTemplate:icon.isTemplate];
  return image;
}

}  // namespace

struct StatusItemMenuBar::Item {
  NSStatusItem* statusItem;
  NSMenu* menu;
  /// The rows that the menu's items show, in the same order.
  std::vector<MenuRow> shown;
};

StatusItemMenuBar::StatusItemMenuBar() : item_(std::make_unique<Item>()) {
  @autoreleasepool {
    item_->statusItem =
        [NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength];
    // The system stores where the user moved the item under this name.
    item_->statusItem.autosaveName = @"Hushbox";
    item_->menu = [[NSMenu alloc] initWithTitle:@""];
    // The rows say which of them are enabled.
    item_->menu.autoenablesItems = NO;
    item_->statusItem.menu = item_->menu;
  }
}

StatusItemMenuBar::~StatusItemMenuBar() {
  @autoreleasepool {
    [NSStatusBar.systemStatusBar removeStatusItem:item_->statusItem];
  }
}

void StatusItemMenuBar::setIcon(const Image& icon, const std::string& description) {
  @autoreleasepool {
    NSStatusBarButton* button = item_->statusItem.button;
    button.image = nativeImage(icon);
    NSString* words = stringFromUtf8(description);
    button.toolTip = words;
    [button setAccessibilityLabel:words];
  }
}

void StatusItemMenuBar::setRows(std::vector<MenuRow> rows) {
  @autoreleasepool {
    NSMenu* menu = item_->menu;
    const auto continued = continuedRows(item_->shown, rows);
    // The first row shown before whose item has not been looked at yet.
    std::size_t next = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const auto index = static_cast<NSInteger>(i);
      if (continued[i]) {
        for (; next < *continued[i]; ++next) [menu removeItemAtIndex:index];
        ++next;
      } else {
        [menu insertItem:makeItem(rows[i]) atIndex:index];
      }
      edit([menu itemAtIndex:index], rows[i]);
    }
    while (menu.numberOfItems > static_cast<NSInteger>(rows.size()))
      [menu removeItemAtIndex:menu.numberOfItems - 1];
    item_->shown = std::move(rows);
  }
}

}  // namespace hushbox
