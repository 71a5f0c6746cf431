#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

namespace hushbox {

/// Converts UTF-8 text. Returns the empty string, never nil, for malformed text. Any thread.
NSString* stringFromUtf8(std::string_view text);

/// Converts to UTF-8. Replaces what cannot be encoded, such as half a surrogate pair at the end of
/// a truncated label. Returns empty text for nil. Any thread.
std::string utf8FromString(NSString* string);

}  // namespace hushbox
