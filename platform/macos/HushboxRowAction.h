#pragma once

#import <Foundation/Foundation.h>

#include <functional>

/// The target of a menu item: calls a function when the item is chosen. The item references its
/// target weakly, so it must also own this as its represented object. Main thread only.
@interface HushboxRowAction : NSObject

@property(nonatomic) std::function<void()> onChoice;

/// Calls `onChoice`, if there is one; ignores the sender.
- (void)run:(id)sender;

@end
