// Strings, numbers, collections and other values.

#import "tests/platform/macos/doubles/FoundationValues.h"

#include <map>
#include <mutex>
#include <utility>

#include "tests/platform/macos/runtime/LiveObjects.h"

using hushbox::doubles::fail;

namespace {

/// Whether these bytes are well-formed UTF-8.
bool isUtf8(std::string_view bytes) {
  for (std::size_t i = 0; i < bytes.size();) {
    const auto lead = static_cast<unsigned char>(bytes[i]);
    const std::size_t length = lead < 0x80                   ? 1
                               : lead >= 0xc2 && lead < 0xe0 ? 2
                               : lead >= 0xe0 && lead < 0xf0 ? 3
                               : lead >= 0xf0 && lead < 0xf5 ? 4
                                                             : 0;
    if (length == 0 || i + length > bytes.size()) return false;
    char32_t point = length == 1 ? lead : lead & (0x7fu >> length);
    for (std::size_t k = 1; k < length; ++k) {
      const auto next = static_cast<unsigned char>(bytes[i + k]);
      if ((next & 0xc0) != 0x80) return false;
      point = (point << 6) | (next & 0x3f);
    }
    if ((length == 3 && point < 0x800) || (length == 4 && (point < 0x10000 || point > 0x10ffff)) ||
        (point >= 0xd800 && point < 0xe000)) {
      return false;
    }
    i += length;
  }
  return true;
}

std::size_t utf16Length(std::string_view utf8) {
  std::size_t units = 0;
  for (const char c : utf8) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xc0) != 0x80) units += byte >= 0xf0 ? 2 : 1;
  }
  return units;
}

std::string fromUtf16(const char16_t* units, std::size_t count) {
  std::string utf8;
  for (std::size_t i = 0; i < count; ++i) {
    char32_t point = units[i];
    if (point >= 0xd800 && point < 0xdc00 && i + 1 < count) {
      point = 0x10000 + ((point - 0xd800) << 10) + (units[++i] - 0xdc00);
    }
    if (point < 0x80) {
      utf8 += static_cast<char>(point);
    } else if (point < 0x800) {
      utf8 += static_cast<char>(0xc0 | (point >> 6));
      utf8 += static_cast<char>(0x80 | (point & 0x3f));
    } else {
      if (point < 0x10000) {
        utf8 += static_cast<char>(0xe0 | (point >> 12));
      } else {
        utf8 += static_cast<char>(0xf0 | (point >> 18));
        utf8 += static_cast<char>(0x80 | ((point >> 12) & 0x3f));
      }
      utf8 += static_cast<char>(0x80 | ((point >> 6) & 0x3f));
      utf8 += static_cast<char>(0x80 | (point & 0x3f));
    }
  }
  return utf8;
}

}  // namespace

@interface UTF8StringDouble : NSString {
 @public
  std::string utf8;
}
@end

/// The layout of a string literal.
@interface NSConstantString : NSString {
  int flags;
  const char* bytes;
  long count;
}
@end

@interface LoneSurrogateDouble : NSString
@end

@implementation NSString
+ (instancetype)stringWithUTF8String:(const char*)bytes {
  if (!bytes) fail("+[NSString stringWithUTF8String:] was given NULL");
  return [[self alloc] initWithBytes:bytes
                              length:std::char_traits<char>::length(bytes)
                            encoding:NSUTF8StringEncoding];
}
- (instancetype)initWithBytes:(const void*)bytes
                       length:(NSUInteger)length
                     encoding:(NSUInteger)encoding {
  if (encoding != NSUTF8StringEncoding) fail("a string's encoding other than UTF-8");
  const std::string_view view(static_cast<const char*>(bytes), length);
  if (!isUtf8(view)) return nil;
  UTF8StringDouble* made = [[UTF8StringDouble alloc] init];
  made->utf8 = view;
  return made;
}
- (NSUInteger)length {
  return utf16Length(self.UTF8String);
}
- (const char*)UTF8String {
  fail("an NSString was made by alloc and init alone");
}
- (NSData*)dataUsingEncoding:(NSUInteger)encoding allowLossyConversion:(BOOL)lossy {
  (void)lossy;
  if (encoding != NSUTF8StringEncoding) fail("a string's encoding other than UTF-8");
  return hushbox::doubles::data(self.UTF8String);
}
- (BOOL)isEqualToString:(NSString*)other {
  return other && std::string_view(self.UTF8String) == other.UTF8String;
}
- (BOOL)isEqual:(id)other {
  return [other isKindOfClass:[NSString class]] && [self isEqualToString:other];
}
- (id)copyWithZone:(struct _NSZone*)zone {
  (void)zone;
  return self;
}
@end

@implementation UTF8StringDouble
- (const char*)UTF8String {
  return utf8.c_str();
}
- (NSUInteger)length {
  return utf16Length(utf8);
}
- (NSData*)dataUsingEncoding:(NSUInteger)encoding allowLossyConversion:(BOOL)lossy {
  (void)lossy;
  if (encoding != NSUTF8StringEncoding) fail("a string's encoding other than UTF-8");
  return hushbox::doubles::data(utf8);
}
@end

@implementation NSConstantString
- (const char*)UTF8String {
  constexpr int isUtf16 = 0x10;
  if ((flags & 0x18) != isUtf16) return bytes;
  static std::mutex mutex;
  static auto* const converted = new std::map<const void*, std::string>;
  const std::lock_guard lock(mutex);
  std::string& utf8 = (*converted)[bytes];
  if (utf8.empty()) {
    utf8 = fromUtf16(reinterpret_cast<const char16_t*>(bytes), static_cast<std::size_t>(count));
  }
  return utf8.c_str();
}
@end

@implementation LoneSurrogateDouble
- (const char*)UTF8String {
  return nullptr;
}
- (NSUInteger)length {
  return 5;
}
- (NSData*)dataUsingEncoding:(NSUInteger)encoding allowLossyConversion:(BOOL)lossy {
  (void)encoding;
  return lossy ? hushbox::doubles::data("Mute?") : nil;
}
@end

@implementation NSNumber {
  double number;
}
+ (NSNumber*)numberWithBool:(BOOL)value {
  return [self numberWithDouble:value ? 1 : 0];
}
+ (NSNumber*)numberWithInt:(int)value {
  return [self numberWithDouble:value];
}
+ (NSNumber*)numberWithDouble:(double)value {
  NSNumber* made = [[NSNumber alloc] init];
  made->number = value;
  return made;
}
- (BOOL)boolValue {
  return number != 0;
}
- (int)intValue {
  return static_cast<int>(number);
}
- (double)doubleValue {
  return number;
}
- (id)copyWithZone:(struct _NSZone*)zone {
  (void)zone;
  return self;
}
@end

@implementation NSNull
+ (NSNull*)null {
  static NSNull* only = [] {
    NSNull* made = [[NSNull alloc] init];
    hushbox::doubles::keepForever((__bridge void*)made);
    return made;
  }();
  return only;
}
- (id)copyWithZone:(struct _NSZone*)zone {
  (void)zone;
  return self;
}
@end

@implementation NSArray {
 @protected
  std::vector<id> items;
  unsigned long changes;
}
+ (instancetype)arrayWithObjects:(const id[])objects count:(NSUInteger)count {
  NSArray* made = [[self alloc] init];
  made->items.assign(objects, objects + count);
  return made;
}
- (NSUInteger)count {
  return items.size();
}
- (id)objectAtIndex:(NSUInteger)index {
  if (index >= items.size()) fail("an index is beyond the end of an NSArray");
  return items[index];
}
- (id)objectAtIndexedSubscript:(NSUInteger)index {
  return [self objectAtIndex:index];
}
- (id)copyWithZone:(struct _NSZone*)zone {
  (void)zone;
  NSArray* made = [[NSArray alloc] init];
  made->items = items;
  return made;
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)length {
  NSUInteger given = 0;
  while (given < length && state->state < items.size()) buffer[given++] = items[state->state++];
  state->itemsPtr = buffer;
  state->mutationsPtr = &changes;
  return given;
}
@end

@implementation NSMutableArray
- (void)addObject:(id)object {
  if (!object) fail("-[NSMutableArray addObject:] was given nil");
  items.push_back(object);
  ++changes;
}
@end

@implementation NSDictionary {
  std::vector<std::pair<id, id>> entries;
}
+ (instancetype)dictionaryWithObjects:(const id[])objects
                              forKeys:(const id[])keys
                                count:(NSUInteger)count {
  NSDictionary* made = [[self alloc] init];
  for (NSUInteger i = 0; i < count; ++i) made->entries.emplace_back(keys[i], objects[i]);
  return made;
}
- (NSUInteger)count {
  return entries.size();
}
- (id)objectForKey:(id)key {
  for (const auto& entry : entries) {
    if ([entry.first isEqual:key]) return entry.second;
  }
  return nil;
}
- (id)objectForKeyedSubscript:(id)key {
  return [self objectForKey:key];
}
- (id)copyWithZone:(struct _NSZone*)zone {
  (void)zone;
  return self;
}
@end

@interface NSData () {
 @public
  std::string content;
}
@end
@implementation NSData
- (NSUInteger)length {
  return content.size();
}
- (const void*)bytes {
  return content.data();
}
@end

@interface NSError () {
 @public
  std::string words;
}
@end
@implementation NSError
- (NSInteger)code {
  return 1;
}
- (NSErrorDomain)domain {
  return @"DoubleErrorDomain";
}
- (NSString*)localizedDescription {
  return hushbox::doubles::string(words);
}
@end

namespace hushbox::doubles {

std::string text(NSString* string) {
  return string ? string.UTF8String : "";
}

NSString* string(const std::string& utf8) {
  NSString* made = [[NSString alloc] initWithBytes:utf8.data()
                                            length:utf8.size()
                                          encoding:NSUTF8StringEncoding];
  if (!made) fail("a test's text is not UTF-8");
  return made;
}

NSError* error(const std::string& description) {
  NSError* made = [[NSError alloc] init];
  made->words = description;
  return made;
}

NSData* data(std::string bytes) {
  NSData* made = [[NSData alloc] init];
  made->content = std::move(bytes);
  return made;
}

NSString* loneSurrogate() {
  return [[LoneSurrogateDouble alloc] init];
}

}  // namespace hushbox::doubles
