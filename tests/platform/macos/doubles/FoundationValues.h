#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/macos/runtime/Failure.h"

namespace hushbox::doubles {

/// Converts between the doubles' plain C++ and the objects that the adapters see.
std::string text(NSString* string);
NSString* string(const std::string& utf8);
NSError* error(const std::string& description);
NSData* data(std::string bytes);
/// Returns a string with half a surrogate pair, which has only a lossy UTF-8 form.
NSString* loneSurrogate();

}  // namespace hushbox::doubles
