#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

namespace hushbox {

/// The string of a UTF-8 text; empty where the text is not UTF-8. Any thread.
NSString* stringFromUtf8(std::string_view text);

/// The string as UTF-8, whatever characters are in it: what cannot be encoded, half a surrogate
/// pair in a label cut short, is replaced. Nil gives the empty text. Any thread.
std::string utf8FromString(NSString* string);

}  // namespace hushbox
