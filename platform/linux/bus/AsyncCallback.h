#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <utility>

namespace hushbox {

/// A function as the callback of one asynchronous GIO call: pass `invoke` and what `data()` gives.
///
/// Whatever the function calls back must be held weakly by it: GIO calls even after a cancellation.
class AsyncCallback {
 public:
  using Function = std::function<void(GObject* source, GAsyncResult* result)>;

  AsyncCallback() = delete;

  /// Lives until the call has ended, which is when GIO calls `invoke`.
  static gpointer data(Function function) { return new Function(std::move(function)); }

  static void invoke(GObject* source, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Function> function(static_cast<Function*>(data));
    (*function)(source, result);
  }
};

}  // namespace hushbox
