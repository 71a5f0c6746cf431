#import "platform/macos/StringConversion.h"

namespace hushbox {

NSString* stringFromUtf8(std::string_view text) {
  NSString* string = [[NSString alloc] initWithBytes:text.data()
                                              length:text.size()
                                            encoding:NSUTF8StringEncoding];
  return string ? string : @"";
}

std::string utf8FromString(NSString* string) {
  @autoreleasepool {
    NSData* bytes = [string dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
    if (!bytes.length) return {};
    return {static_cast<const char*>(bytes.bytes), bytes.length};
  }
}

}  // namespace hushbox
