// Blocks that can capture Objective-C objects, which the distribution's library can't.

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "tests/platform/macos/runtime/Abi.h"
#include "tests/platform/macos/runtime/Failure.h"
#include "tests/platform/macos/runtime/LiveObjects.h"

extern "C" {
void* _NSConcreteStackBlock[32];
void* _NSConcreteMallocBlock[32];
void* _NSConcreteGlobalBlock[32];
}

namespace hushbox::doubles {
namespace {

struct BlockDescriptor {
  unsigned long reserved;
  unsigned long size;
  void (*copy)(void* to, const void* from);
  void (*dispose)(const void* block);
};

struct Block {
  void* isa;
  std::atomic<int> flags;
  int reserved;
  void (*invoke)();
  BlockDescriptor* descriptor;
};

struct SharedVariable {
  void* isa;
  SharedVariable* forwarding;
  std::atomic<int> flags;
  std::uint32_t size;
  void (*keep)(SharedVariable* to, SharedVariable* from);
  void (*destroy)(SharedVariable* variable);
};

constexpr int oneReference = 2;
constexpr int references = 0xfffe;
constexpr int onHeap = 1 << 24;
constexpr int hasCopyAndDispose = 1 << 25;
constexpr int fieldKinds = 7;
constexpr int fieldIsBlock = 7;
constexpr int fieldIsShared = 8;
constexpr int calledFromHelper = 128;

std::atomic<long> blocksOnHeap{0};

/// Copies the block to the heap.
template <typename T>
T* copied(const T* from, std::size_t size) {
  void* const to = std::malloc(size);
  std::memcpy(to, static_cast<const void*>(from), size);
  return static_cast<T*>(to);
}

/// Removes one reference; returns whether it was the last.
bool drop(std::atomic<int>& flags, const char* what) {
  const int before = flags.fetch_sub(oneReference);
  if ((before & references) == 0) fail(std::string(what) + " was released too often");
  return (before & references) == oneReference;
}

SharedVariable* retained(SharedVariable* variable) {
  SharedVariable* const current = variable->forwarding;
  if (current->flags & onHeap) {
    current->flags += oneReference;
    return current;
  }
  auto* const moved = copied(variable, variable->size);
  // One reference for the stack frame, one for the block.
  moved->flags = variable->flags | onHeap | 2 * oneReference;
  moved->forwarding = moved;
  variable->forwarding = moved;
  if (moved->flags & hasCopyAndDispose) moved->keep(moved, variable);
  return moved;
}

void release(SharedVariable* variable) {
  SharedVariable* const current = variable->forwarding;
  if (!(current->flags & onHeap) || !drop(current->flags, "a variable shared with a block")) return;
  if (current->flags & hasCopyAndDispose) current->destroy(current);
  std::free(current);
}

}  // namespace

long liveBlocks() {
  return blocksOnHeap;
}

}  // namespace hushbox::doubles

using namespace hushbox::doubles;

extern "C" {

void* _Block_copy(const void* pointer) {
  auto* const block = static_cast<Block*>(const_cast<void*>(pointer));
  if (!block || block->isa == _NSConcreteGlobalBlock) return block;
  if (block->flags & onHeap) {
    block->flags += oneReference;
    return block;
  }
  auto* const moved = copied(block, block->descriptor->size);
  moved->isa = _NSConcreteMallocBlock;
  moved->flags = (block->flags & ~references) | onHeap | oneReference;
  ++blocksOnHeap;
  if (moved->flags & hasCopyAndDispose) block->descriptor->copy(moved, block);
  return moved;
}

void _Block_release(const void* pointer) {
  auto* const block = static_cast<Block*>(const_cast<void*>(pointer));
  if (!block || !(block->flags & onHeap) || !drop(block->flags, "a block")) return;
  if (block->flags & hasCopyAndDispose) block->descriptor->dispose(block);
  --blocksOnHeap;
  std::free(block);
}

void _Block_object_assign(void* to, const void* from, int field) {
  auto** const place = static_cast<void**>(to);
  void* const object = const_cast<void*>(from);
  if (field & calledFromHelper) {
    *place = object;
  } else if ((field & fieldIsShared) && !(field & fieldKinds)) {
    *place = retained(static_cast<SharedVariable*>(object));
  } else if ((field & fieldKinds) == fieldIsBlock) {
    *place = _Block_copy(from);
  } else {
    *place = objc_retain(static_cast<id>(object));
  }
}

void _Block_object_dispose(const void* pointer, int field) {
  void* const object = const_cast<void*>(pointer);
  if (field & calledFromHelper) return;
  if ((field & fieldIsShared) && !(field & fieldKinds)) {
    release(static_cast<SharedVariable*>(object));
  } else if ((field & fieldKinds) == fieldIsBlock) {
    _Block_release(pointer);
  } else {
    objc_release(static_cast<id>(object));
  }
}
}
