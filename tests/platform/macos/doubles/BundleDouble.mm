#include "tests/platform/macos/doubles/BundleDouble.h"

#import <Foundation/Foundation.h>

#include <map>

#import "tests/platform/macos/doubles/FoundationValues.h"
#include "tests/platform/macos/runtime/LiveObjects.h"

namespace {

constexpr const char* usual = "com.example.hushbox";
std::optional<std::string> identifier = usual;
std::map<std::string, std::string> strings;
std::string shortTime = "9:41 AM";

}  // namespace

namespace hushbox::doubles {

void setBundleIdentifier(std::optional<std::string> value) {
  identifier = std::move(value);
}

void setLocalization(const std::string& key, const std::string& value) {
  strings[key] = value;
}

void setShortTime(const std::string& text) {
  shortTime = text;
}

void resetBundle() {
  identifier = usual;
  strings.clear();
  shortTime = "9:41 AM";
}

}  // namespace hushbox::doubles

using namespace hushbox::doubles;

@implementation NSBundle
+ (NSBundle*)mainBundle {
  static NSBundle* only = [] {
    NSBundle* made = [[NSBundle alloc] init];
    keepForever((__bridge void*)made);
    return made;
  }();
  return only;
}
- (NSString*)bundleIdentifier {
  return identifier ? string(*identifier) : nil;
}
- (NSString*)localizedStringForKey:(NSString*)key value:(NSString*)value table:(NSString*)table {
  if (table) fail("a table of strings that the bundle does not have");
  const auto found = strings.find(text(key));
  if (found != strings.end()) return string(found->second);
  return value.length ? value : key;
}
@end

@implementation NSDate
+ (instancetype)date {
  return [[self alloc] init];
}
@end

@implementation NSDateFormatter
+ (NSString*)localizedStringFromDate:(NSDate*)date
                           dateStyle:(NSDateFormatterStyle)dateStyle
                           timeStyle:(NSDateFormatterStyle)timeStyle {
  if (!date) fail("a date formatter was given no date");
  if (dateStyle != NSDateFormatterNoStyle || timeStyle != NSDateFormatterShortStyle) {
    fail("a date style other than the time alone, short");
  }
  return string(shortTime);
}
@end
