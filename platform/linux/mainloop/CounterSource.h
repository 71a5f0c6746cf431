#pragma once

#include <glib-unix.h>

#include <functional>

namespace hushbox {

/// Calls a block from the default main context when an eventfd or a timerfd becomes readable: once,
/// however often its counter was raised. Main thread only.
///
/// Like any source, it does not fire while its own block runs, nor after it has been destroyed.
class CounterSource {
 public:
  /// Takes ownership of the descriptor. If it is -1, prints the error and aborts: without it there
  /// is no main loop.
  CounterSource(int descriptor, std::function<void()> block);
  ~CounterSource();
  CounterSource(const CounterSource&) = delete;
  CounterSource& operator=(const CounterSource&) = delete;

  int descriptor() const { return descriptor_; }

 private:
  static gboolean dispatch(gint descriptor, GIOCondition condition, gpointer self);

  int descriptor_;
  std::function<void()> block_;
  GSource* source_;
};

}  // namespace hushbox
