// Reference counting, weak references, autorelease pools and properties. An over-release aborts the
// process at once.

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tests/platform/macos/runtime/Abi.h"
#include "tests/platform/macos/runtime/Failure.h"
#include "tests/platform/macos/runtime/LiveObjects.h"

namespace hushbox::doubles {
namespace {

constexpr std::uint64_t alive = 0x6875736862616c76;
constexpr std::uint64_t dead = 0x6875736864656164;

/// Precedes every object in memory.
struct Header {
  std::int64_t references;
  std::uint64_t state;
};

struct Heap {
  std::recursive_mutex mutex;
  std::unordered_map<id, std::set<id*>> weakReferences;
  std::map<std::string, long> live;
  std::set<const void*> forever;
  /// The objects freed last, whose memory is kept so that an over-release is detected.
  std::vector<void*> graves;
};

Heap& heap() {
  static auto* const only = new Heap;
  return *only;
}

thread_local std::vector<std::vector<id>> pools;

Header* headerOf(id object) {
  Header* const header = reinterpret_cast<Header*>(object) - 1;
  if (header->state == dead) fail("an object was used after its last release");
  if (header->state != alive) fail("a pointer that is not an object was retained or released");
  return header;
}

bool isImmortal(id object) {
  return static_cast<void*>(object->isa) == static_cast<void*>(__CFConstantStringClassReference) ||
         isClass(object) || heap().forever.count(object) != 0;
}

void bury(void* memory) {
  heap().graves.push_back(memory);
  constexpr std::size_t remembered = 4096;
  if (heap().graves.size() < remembered) return;
  for (std::size_t i = 0; i < remembered / 2; ++i) std::free(heap().graves[i]);
  heap().graves.erase(heap().graves.begin(), heap().graves.begin() + remembered / 2);
}

template <typename Result, typename... Arguments>
Result send(id receiver, const char* selector, Arguments... arguments) {
  const SEL name = sel_registerName(selector);
  return reinterpret_cast<Result (*)(id, SEL, Arguments...)>(lookUp(receiver, name))(receiver, name,
                                                                                     arguments...);
}

void callOn(id object, Class cls, const char* selector) {
  const SEL name = sel_registerName(selector);
  if (const IMP method = ownMethod(cls, name)) {
    reinterpret_cast<void (*)(id, SEL)>(method)(object, name);
  }
}

void construct(id object, Class cls) {
  if (!cls) return;
  construct(object, cls->super);
  callOn(object, cls, ".cxx_construct");
}

void setProperty(id object, id value, std::ptrdiff_t offset, bool copy) {
  id next = value;
  if (value && (copy || isBlock(value))) {
    next = isBlock(value) ? static_cast<id>(_Block_copy(value)) : send<id>(value, "copy");
  } else {
    objc_retain(value);
  }
  id* const place = reinterpret_cast<id*>(reinterpret_cast<char*>(object) + offset);
  objc_release(std::exchange(*place, next));
}

}  // namespace

void destroy(id object) {
  for (Class cls = object->isa; cls; cls = cls->super) callOn(object, cls, ".cxx_destruct");
  const std::lock_guard lock(heap().mutex);
  const auto weak = heap().weakReferences.find(object);
  if (weak != heap().weakReferences.end()) {
    for (id* place : weak->second) *place = nullptr;
    heap().weakReferences.erase(weak);
  }
  --heap().live[object->isa->data->name];
  Header* const header = headerOf(object);
  header->state = dead;
  bury(header);
}

long liveObjects() {
  const std::lock_guard lock(heap().mutex);
  long count = liveBlocks();
  for (const auto& [name, number] : heap().live) count += number;
  return count;
}

std::size_t undrainedPools() {
  return pools.size();
}

std::size_t autoreleasedObjects() {
  return pools.empty() ? 0 : pools.back().size();
}

long liveObjects(const std::string& className) {
  const std::lock_guard lock(heap().mutex);
  return heap().live[className];
}

std::string describeLiveObjects() {
  const std::lock_guard lock(heap().mutex);
  std::string words = "block " + std::to_string(liveBlocks());
  for (const auto& [name, number] : heap().live) {
    if (number != 0) words += ", " + name + " " + std::to_string(number);
  }
  return words;
}

void keepForever(const void* object) {
  const std::lock_guard lock(heap().mutex);
  if (heap().forever.insert(object).second) {
    --heap().live[static_cast<const objc_object*>(object)->isa->data->name];
  }
}

}  // namespace hushbox::doubles

using namespace hushbox::doubles;

extern "C" {

id objc_alloc(Class cls) {
  if (!cls) return nullptr;
  const std::lock_guard lock(heap().mutex);
  auto* const header =
      static_cast<Header*>(std::calloc(1, sizeof(Header) + cls->data->instanceSize));
  header->references = 1;
  header->state = alive;
  const id object = reinterpret_cast<id>(header + 1);
  object->isa = cls;
  ++heap().live[cls->data->name];
  construct(object, cls);
  return object;
}

id objc_retain(id object) {
  if (!object) return object;
  if (isBlock(object)) {
    // A block on the stack stays there; only objc_retainBlock copies it to the heap.
    return object->isa == reinterpret_cast<Class>(_NSConcreteStackBlock)
               ? object
               : static_cast<id>(_Block_copy(object));
  }
  const std::lock_guard lock(heap().mutex);
  if (!isImmortal(object)) ++headerOf(object)->references;
  return object;
}

void objc_release(id object) {
  if (!object) return;
  if (isBlock(object)) return _Block_release(object);
  bool last = false;
  {
    const std::lock_guard lock(heap().mutex);
    if (isImmortal(object)) return;
    Header* const header = headerOf(object);
    if (header->references == 0) fail("an object was over-released during its destruction");
    last = --header->references == 0;
    if (last) {
      // From here on a weak reference reads as nil.
      const auto weak = heap().weakReferences.find(object);
      if (weak != heap().weakReferences.end()) {
        for (id* place : weak->second) *place = nullptr;
        heap().weakReferences.erase(weak);
      }
      // dealloc may retain and release the object.
      header->references = 1 << 20;
    }
  }
  if (last) send<void>(object, "dealloc");
}

id objc_autorelease(id object) {
  if (!object) return object;
  if (pools.empty()) fail("an object was autoreleased without a pool: it leaks");
  pools.back().push_back(object);
  return object;
}

void* objc_autoreleasePoolPush() {
  pools.emplace_back();
  return reinterpret_cast<void*>(pools.size());
}

void objc_autoreleasePoolPop(void* pool) {
  const auto level = reinterpret_cast<std::size_t>(pool);
  if (level > pools.size()) fail("an autorelease pool was drained twice");
  while (pools.size() >= level) {
    // Destroying an object may autorelease others.
    while (!pools.back().empty()) {
      const auto objects = std::exchange(pools.back(), {});
      for (id object : objects) objc_release(object);
    }
    pools.pop_back();
  }
}

id objc_retainBlock(id block) {
  return static_cast<id>(_Block_copy(block));
}
id objc_retainAutoreleasedReturnValue(id object) {
  return objc_retain(object);
}
id objc_claimAutoreleasedReturnValue(id object) {
  return objc_retain(object);
}
id objc_unsafeClaimAutoreleasedReturnValue(id object) {
  return object;
}
id objc_autoreleaseReturnValue(id object) {
  return objc_autorelease(object);
}
id objc_retainAutorelease(id object) {
  return objc_autorelease(objc_retain(object));
}
id objc_retainAutoreleaseReturnValue(id object) {
  return objc_autorelease(objc_retain(object));
}

void objc_storeStrong(id* place, id object) {
  objc_retain(object);
  objc_release(std::exchange(*place, object));
}

id objc_initWeak(id* place, id object) {
  const std::lock_guard lock(heap().mutex);
  *place = object;
  if (object && !isBlock(object)) heap().weakReferences[object].insert(place);
  return object;
}

void objc_destroyWeak(id* place) {
  const std::lock_guard lock(heap().mutex);
  const auto found = heap().weakReferences.find(*place);
  if (found != heap().weakReferences.end()) {
    found->second.erase(place);
    if (found->second.empty()) heap().weakReferences.erase(found);
  }
  *place = nullptr;
}

id objc_storeWeak(id* place, id object) {
  const std::lock_guard lock(heap().mutex);
  objc_destroyWeak(place);
  return objc_initWeak(place, object);
}

id objc_loadWeakRetained(id* place) {
  const std::lock_guard lock(heap().mutex);
  return objc_retain(*place);
}

id objc_loadWeak(id* place) {
  return objc_autorelease(objc_loadWeakRetained(place));
}

void objc_copyWeak(id* to, id* from) {
  const std::lock_guard lock(heap().mutex);
  objc_initWeak(to, *from);
}

void objc_moveWeak(id* to, id* from) {
  const std::lock_guard lock(heap().mutex);
  objc_initWeak(to, *from);
  objc_destroyWeak(from);
}

id objc_alloc_init(Class cls) {
  return send<id>(send<id>(reinterpret_cast<id>(cls), "alloc"), "init");
}

id objc_opt_new(Class cls) {
  return objc_alloc_init(cls);
}

id objc_getProperty(id object, SEL, std::ptrdiff_t offset, bool) {
  const std::lock_guard lock(heap().mutex);
  return objc_autorelease(
      objc_retain(*reinterpret_cast<id*>(reinterpret_cast<char*>(object) + offset)));
}

void objc_setProperty_nonatomic(id object, SEL, id value, std::ptrdiff_t offset) {
  setProperty(object, value, offset, false);
}
void objc_setProperty_nonatomic_copy(id object, SEL, id value, std::ptrdiff_t offset) {
  setProperty(object, value, offset, true);
}
void objc_setProperty_atomic(id object, SEL, id value, std::ptrdiff_t offset) {
  setProperty(object, value, offset, false);
}
void objc_setProperty_atomic_copy(id object, SEL, id value, std::ptrdiff_t offset) {
  setProperty(object, value, offset, true);
}

void objc_copyStruct(void* to, const void* from, std::ptrdiff_t size, bool, bool) {
  std::memcpy(to, from, static_cast<std::size_t>(size));
}

using CopyHelper = void (*)(void* to, const void* from);
void objc_copyCppObjectAtomic(void* to, const void* from, CopyHelper copy) {
  const std::lock_guard lock(heap().mutex);
  copy(to, from);
}

void objc_enumerationMutation(id) {
  fail("a collection was changed while it was enumerated");
}

int objc_sync_enter(id) {
  heap().mutex.lock();
  return 0;
}

int objc_sync_exit(id) {
  heap().mutex.unlock();
  return 0;
}
}
