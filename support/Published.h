#pragma once

#include <utility>

#include "support/ChangePublisher.h"

namespace hushbox {

/// A member variable that announces every assignment before it takes effect, even of an equal
/// value.
///
/// It belongs to the object that owns `publisher`, which must be declared before it. Main thread
/// only.
template <typename T>
class Published {
 public:
  Published(const ChangePublisher& publisher, T initial)
      : publisher_(publisher), value_(std::move(initial)) {}
  Published(const Published&) = delete;
  Published& operator=(const Published&) = delete;

  const T& get() const { return value_; }

  Published& operator=(T value) {
    publisher_.send();
    value_ = std::move(value);
    return *this;
  }

 private:
  const ChangePublisher& publisher_;
  T value_;
};

}  // namespace hushbox
