#pragma once

#include <cstddef>
#include <string>

namespace hushbox::doubles {

/// Returns how many Objective-C objects and copied blocks are alive, not counting those that are
/// kept until the process ends. Any thread.
long liveObjects();

/// Returns how many objects of the class with this name are alive, not counting subclasses.
long liveObjects(const std::string& className);

/// Returns how many blocks are on the heap.
long liveBlocks();

/// Returns how many autorelease pools this thread has not drained.
std::size_t undrainedPools();
/// Returns how many objects wait in the innermost pool of this thread.
std::size_t autoreleasedObjects();

/// Describes the live objects for a failure message: "NSTimer 1, block 2".
std::string describeLiveObjects();

/// Exempts an object from the count and from reference counting, for the singletons.
void keepForever(const void* object);

}  // namespace hushbox::doubles
