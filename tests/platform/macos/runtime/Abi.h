#pragma once

#include <cstdint>

// The structures that clang emits for the Objective-C 2 runtime of macOS.

struct objc_class;

struct objc_object {
  objc_class* isa;
};

using Class = objc_class*;
using id = objc_object*;
using SEL = const char*;
using IMP = void (*)();

namespace hushbox::doubles {

struct Method {
  SEL name;
  const char* types;
  IMP implementation;
};

struct MethodList {
  std::uint32_t entrySize;
  std::uint32_t count;
  Method first;
};

struct InstanceVariable {
  std::int64_t* offset;
  const char* name;
  const char* type;
  std::uint32_t alignment;
  std::uint32_t size;
};

struct InstanceVariableList {
  std::uint32_t entrySize;
  std::uint32_t count;
  InstanceVariable first;
};

struct ClassData {
  static constexpr std::uint32_t metaclass = 1;

  std::uint32_t flags;
  std::uint32_t instanceStart;
  std::uint32_t instanceSize;
  std::uint32_t reserved;
  const std::uint8_t* layout;
  const char* name;
  MethodList* methods;
  void* protocols;
  InstanceVariableList* variables;
  const std::uint8_t* weakLayout;
  void* properties;
};

struct Category {
  const char* name;
  objc_class* extended;
  MethodList* instanceMethods;
  MethodList* classMethods;
  void* protocols;
  void* properties;
  void* classProperties;
  std::uint32_t size;
};

struct SuperCall {
  id receiver;
  objc_class* caller;
};

}  // namespace hushbox::doubles

struct objc_class {
  objc_class* isa;
  objc_class* super;
  void* cache;
  void* vtable;
  hushbox::doubles::ClassData* data;
};

extern "C" {
extern void* _NSConcreteStackBlock[32];
extern void* _NSConcreteMallocBlock[32];
extern void* _NSConcreteGlobalBlock[32];
extern void* __CFConstantStringClassReference[5];

void* _Block_copy(const void* block);
void _Block_release(const void* block);

SEL sel_registerName(const char* name);
id objc_alloc(Class cls);
id objc_retain(id object);
void objc_release(id object);
id objc_autorelease(id object);
id objc_initWeak(id* place, id object);
void objc_destroyWeak(id* place);
}

namespace hushbox::doubles {

inline bool isBlock(id object) {
  const void* kind = object->isa;
  return kind == _NSConcreteStackBlock || kind == _NSConcreteMallocBlock ||
         kind == _NSConcreteGlobalBlock;
}

/// A class or a metaclass.
bool isClass(id object);
Class classOf(id object);
Class classNamed(const char* name);
bool isKindOf(id object, Class cls);
bool respondsTo(id object, SEL selector);
IMP lookUp(id receiver, SEL selector);
/// Returns the method of this class, ignoring its superclasses; null if there is none.
IMP ownMethod(Class cls, SEL selector);
/// Frees an object, as the root class's dealloc does.
void destroy(id object);

}  // namespace hushbox::doubles
