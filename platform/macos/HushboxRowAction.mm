#import "platform/macos/HushboxRowAction.h"

@implementation HushboxRowAction

- (void)run:(id)sender {
  (void)sender;
  // A copy: it may replace the rows, and this with them.
  const std::function<void()> action = self.onChoice;
  if (action) action();
}

@end
