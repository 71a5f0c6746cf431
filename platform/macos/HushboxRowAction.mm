#import "platform/macos/HushboxRowAction.h"

#include <utility>

@implementation HushboxRowAction {
  std::function<void()> _action;
}

- (instancetype)initWithAction:(std::function<void()>)action {
  self = [super init];
  if (self) _action = std::move(action);
  return self;
}

- (void)run:(id)sender {
  (void)sender;
  // A copy: the action may replace the rows, and this with them.
  const std::function<void()> action = _action;
  if (action) action();
}

@end
