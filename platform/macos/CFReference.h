#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace hushbox {

/// Owns one reference to a Core Foundation object, or is null. As thread-safe as the object.
template <typename Ref>
class CFReference {
 public:
  CFReference() = default;
  /// Takes over the reference that a function with Create or Copy in its name returned.
  static CFReference adopting(Ref object) { return CFReference(object); }
  /// Adds a reference to an object that is owned elsewhere.
  static CFReference retaining(Ref object) {
    if (object) CFRetain(object);
    return CFReference(object);
  }
  ~CFReference() {
    if (object_) CFRelease(object_);
  }
  CFReference(CFReference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  CFReference(const CFReference&) = delete;
  CFReference& operator=(const CFReference&) = delete;

  explicit operator bool() const { return object_ != nullptr; }
  Ref get() const { return object_; }

 private:
  explicit CFReference(Ref object) : object_(object) {}

  Ref object_ = nullptr;
};

}  // namespace hushbox
