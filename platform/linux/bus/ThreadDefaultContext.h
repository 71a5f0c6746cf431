#pragma once

#include <glib.h>

namespace hushbox {

/// Makes a main context the thread's default for a scope, so that GIO calls back on it.
class ThreadDefaultContext {
 public:
  explicit ThreadDefaultContext(GMainContext* context) : context_(context) {
    g_main_context_push_thread_default(context_);
  }
  ~ThreadDefaultContext() { g_main_context_pop_thread_default(context_); }
  ThreadDefaultContext(const ThreadDefaultContext&) = delete;
  ThreadDefaultContext& operator=(const ThreadDefaultContext&) = delete;

 private:
  GMainContext* const context_;
};

}  // namespace hushbox
