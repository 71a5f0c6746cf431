// The root class. Compiled without automatic reference counting, which it implements.

#import <Foundation/Foundation.h>

#include "tests/platform/macos/runtime/Failure.h"

// Plain C, because the runtime declares these types differently from the language.
extern "C" {
id objc_alloc(Class cls);
Class objc_opt_class(id object);
const char* class_getName(Class cls);
void* _Block_copy(const void* block);
void hushbox_destroy(id object);
bool objc_opt_isKindOfClass(id object, Class cls);
bool objc_opt_respondsToSelector(id object, SEL selector);
}

@implementation NSObject

+ (instancetype)alloc {
  return objc_alloc(self);
}
+ (instancetype)new {
  return [[self alloc] init];
}
+ (Class)class {
  return self;
}
- (instancetype)init {
  return self;
}
- (void)dealloc {
  hushbox_destroy(self);
}
- (id)copy {
  return [(id<NSCopying>)self copyWithZone:nullptr];
}
- (id)mutableCopy {
  hushbox::doubles::fail("mutableCopy has no double");
}
- (Class)class {
  return objc_opt_class(self);
}
- (Class)superclass {
  hushbox::doubles::fail("superclass has no double");
}
- (BOOL)isEqual:(id)object {
  return object == self;
}
- (NSUInteger)hash {
  return (NSUInteger)self;
}
- (BOOL)isKindOfClass:(Class)cls {
  return objc_opt_isKindOfClass(self, cls);
}
- (BOOL)respondsToSelector:(SEL)selector {
  return objc_opt_respondsToSelector(self, selector);
}
- (NSString*)description {
  return [NSString stringWithUTF8String:class_getName(objc_opt_class(self))];
}

@end

@interface NSBlock : NSObject <NSCopying>
@end

@implementation NSBlock

- (id)copy {
  return (id)_Block_copy((const void*)self);
}
- (id)copyWithZone:(struct _NSZone*)zone {
  (void)zone;
  return (id)_Block_copy((const void*)self);
}

@end
