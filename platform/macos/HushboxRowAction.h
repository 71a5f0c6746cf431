#pragma once

#import <Foundation/Foundation.h>

#include <functional>

/// What choosing a row of the menu does: the target of the row's item, which holds its target only
/// weakly and so keeps this as its represented object. Main thread only.
@interface HushboxRowAction : NSObject

@property(nonatomic) std::function<void()> onChoice;

/// Calls `onChoice`; the sender is ignored.
- (void)run:(id)sender;

@end
