#pragma once

#include <unistd.h>

#include <utility>

namespace hushbox {

/// Owns a file descriptor and closes it when destroyed; -1 for none. Move-only.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int value) : value_(value) {}
  ~Descriptor() { reset(); }
  Descriptor(Descriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    reset(std::exchange(other.value_, -1));
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return value_; }
  explicit operator bool() const { return value_ >= 0; }

  void reset(int value = -1) {
    if (const int old = std::exchange(value_, value); old >= 0) close(old);
  }

 private:
  int value_ = -1;
};

}  // namespace hushbox
