#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/macos/runtime/Failure.h"

namespace hushbox::doubles {

/// Between the doubles' plain C++ and the objects that the adapters see.
std::string text(NSString* string);
NSString* string(const std::string& utf8);
NSError* error(const std::string& description);
NSData* data(std::string bytes);
/// A string with half a surrogate pair in it: it has no UTF-8 unless one takes losses.
NSString* loneSurrogate();

}  // namespace hushbox::doubles
