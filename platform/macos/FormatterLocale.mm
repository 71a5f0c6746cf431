#import "platform/macos/FormatterLocale.h"

#import <Foundation/Foundation.h>

#import "platform/macos/StringConversion.h"

namespace hushbox {

std::string FormatterLocale::shortTime() {
  @autoreleasepool {
    return utf8FromString([NSDateFormatter localizedStringFromDate:[NSDate date]
                                                         dateStyle:NSDateFormatterNoStyle
                                                         timeStyle:NSDateFormatterShortStyle]);
  }
}

}  // namespace hushbox
