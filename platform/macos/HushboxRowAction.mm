#import "platform/macos/HushboxRowAction.h"

@implementation HushboxRowAction

- (void)run:(id)sender {
  (void)sender;
  // A copy, because the function may replace the rows and so destroy this object.
  const std::function<void()> action = self.onChoice;
  if (action) action();
}

@end
