// Classes, selectors and messages. An unrecognized selector aborts the process.

#include <cstring>
#include <mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tests/platform/macos/runtime/Abi.h"
#include "tests/platform/macos/runtime/Failure.h"

extern "C" {
extern Class __start_objc_classlist[] __attribute__((weak));
extern Class __stop_objc_classlist[] __attribute__((weak));
extern hushbox::doubles::Category* __start_objc_catlist[] __attribute__((weak));
extern hushbox::doubles::Category* __stop_objc_catlist[] __attribute__((weak));
extern SEL __start_objc_selrefs[] __attribute__((weak));
extern SEL __stop_objc_selrefs[] __attribute__((weak));
char _objc_empty_cache[64];
void* __CFConstantStringClassReference[5];
}

namespace hushbox::doubles {
namespace {

/// The classes and selectors of the program; complete before main().
struct Registry {
  std::recursive_mutex mutex;
  std::unordered_map<std::string, SEL> selectors;
  std::unordered_map<std::string, Class> classes;
  std::unordered_set<const void*> classObjects;
  std::unordered_map<Class, std::vector<MethodList*>> categories;
  std::unordered_map<Class, std::unordered_map<SEL, IMP>> cache;
};

Registry& registry() {
  static auto* const only = new Registry;
  return *only;
}

void registerSelectors(MethodList* methods) {
  if (!methods) return;
  for (std::uint32_t i = 0; i < methods->count; ++i) {
    Method& method = (&methods->first)[i];
    method.name = sel_registerName(method.name);
  }
}

IMP methodIn(MethodList* methods, SEL selector) {
  if (!methods) return nullptr;
  for (std::uint32_t i = 0; i < methods->count; ++i) {
    const Method& method = (&methods->first)[i];
    if (method.name == selector) return method.implementation;
  }
  return nullptr;
}

IMP find(Class cls, SEL selector) {
  for (; cls; cls = cls->super) {
    const auto extensions = registry().categories.find(cls);
    if (extensions != registry().categories.end()) {
      for (MethodList* list : extensions->second) {
        if (const IMP found = methodIn(list, selector)) return found;
      }
    }
    if (const IMP found = ownMethod(cls, selector)) return found;
  }
  return nullptr;
}

/// Shifts a class's instance variables behind those of its superclass, whose size is known only
/// after linking.
void slideVariables(Class cls) {
  ClassData* const data = cls->data;
  if (!cls->super || (data->flags & ClassData::metaclass)) return;
  const std::uint32_t needed = cls->super->data->instanceSize;
  if (needed <= data->instanceStart) return;
  const std::uint32_t slide = (needed - data->instanceStart + 15) & ~15u;
  if (data->variables) {
    for (std::uint32_t i = 0; i < data->variables->count; ++i) {
      if (auto* const offset = (&data->variables->first)[i].offset) *offset += slide;
    }
  }
  data->instanceStart += slide;
  data->instanceSize += slide;
}

void realize(Class cls) {
  if (!cls || !registry().classObjects.insert(cls).second) return;
  realize(cls->super);
  slideVariables(cls);
  registerSelectors(cls->data->methods);
  registerSelectors(cls->isa->data->methods);
  registry().classObjects.insert(cls->isa);
  registry().classes[cls->data->name] = cls;
}

/// Runs before the program's static initialisers, which may send messages.
__attribute__((constructor(101))) void loadImages() {
  for (SEL* p = __start_objc_selrefs; p < __stop_objc_selrefs; ++p) *p = sel_registerName(*p);
  for (Class* p = __start_objc_classlist; p < __stop_objc_classlist; ++p) realize(*p);
  for (Category** p = __start_objc_catlist; p < __stop_objc_catlist; ++p) {
    registerSelectors((*p)->instanceMethods);
    registerSelectors((*p)->classMethods);
    const Class cls = (*p)->extended;
    if ((*p)->instanceMethods) registry().categories[cls].push_back((*p)->instanceMethods);
    if ((*p)->classMethods) registry().categories[cls->isa].push_back((*p)->classMethods);
  }
  if (const Class strings = classNamed("NSConstantString")) {
    std::memcpy(__CFConstantStringClassReference, strings, sizeof *strings);
  }
}

}  // namespace

bool isClass(id object) {
  return registry().classObjects.count(object) != 0;
}

Class classOf(id object) {
  if (!object) return nullptr;
  return isBlock(object) ? classNamed("NSBlock") : object->isa;
}

Class classNamed(const char* name) {
  const auto found = registry().classes.find(name);
  return found == registry().classes.end() ? nullptr : found->second;
}

bool isKindOf(id object, Class cls) {
  for (Class c = classOf(object); c; c = c->super) {
    if (c == cls) return true;
    // String literals have their own copy of their class.
    if (cls && c->data == cls->data) return true;
  }
  return false;
}

bool respondsTo(id object, SEL selector) {
  const std::lock_guard lock(registry().mutex);
  return object && find(classOf(object), selector);
}

IMP ownMethod(Class cls, SEL selector) {
  return methodIn(cls->data->methods, selector);
}

IMP lookUp(id receiver, SEL selector) {
  const std::lock_guard lock(registry().mutex);
  const Class cls = classOf(receiver);
  IMP& method = registry().cache[cls][selector];
  if (!method) method = find(cls, selector);
  if (!method) {
    fail(std::string("unrecognized selector ") +
         (cls->data->flags & ClassData::metaclass ? "+[" : "-[") + cls->data->name + " " +
         selector + "]");
  }
  return method;
}

}  // namespace hushbox::doubles

using namespace hushbox::doubles;

extern "C" {

SEL sel_registerName(const char* name) {
  const std::lock_guard lock(registry().mutex);
  SEL& selector = registry().selectors[name];
  if (!selector) selector = strdup(name);
  return selector;
}

void hushbox_destroy(id object) {
  destroy(object);
}

IMP hushbox_lookUp(id receiver, SEL selector) {
  return lookUp(receiver, selector);
}

IMP hushbox_lookUpSuper(const SuperCall* call, SEL selector) {
  const std::lock_guard lock(registry().mutex);
  const IMP method = find(call->caller->super, selector);
  if (!method) fail(std::string("unrecognized selector of the superclass: ") + selector);
  return method;
}

Class objc_getClass(const char* name) {
  return classNamed(name);
}

const char* class_getName(Class cls) {
  return cls->data->name;
}

Class objc_opt_class(id object) {
  return object && isClass(object) ? reinterpret_cast<Class>(object) : classOf(object);
}

bool objc_opt_isKindOfClass(id object, Class cls) {
  return isKindOf(object, cls);
}

bool objc_opt_respondsToSelector(id object, SEL selector) {
  return respondsTo(object, selector);
}

id objc_opt_self(id object) {
  return object;
}

bool __isPlatformVersionAtLeast(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {
  return true;
}
}
