#pragma once

#include <glib-unix.h>

#include <functional>

namespace hushbox {

/// An eventfd or a timerfd that the default main context watches: its counter is read and a block
/// is called, once for however many times it was raised.
///
/// Lives on the main thread; nothing is called once it is gone. A source like any other: it does
/// not fire inside its own block.
class CounterSource {
 public:
  /// Takes over the descriptor. Ends the program with a sentence when it is -1: without it there is
  /// no main loop.
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
