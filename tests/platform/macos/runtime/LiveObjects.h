#pragma once

#include <string>

namespace hushbox::doubles {

/// How many Objective-C objects of every class and copied blocks there are now, without those kept
/// for the life of the process. Any thread.
long liveObjects();

/// How many objects there are of the class with that name, its subclasses not counted.
long liveObjects(const std::string& className);

/// How many blocks live on the heap.
long liveBlocks();

/// The classes with live objects and their numbers, for a message: "NSTimer 1, block 2".
std::string describeLiveObjects();

/// Takes an object out of the count and out of reference counting: there is one for good.
void keepForever(const void* object);

}  // namespace hushbox::doubles
