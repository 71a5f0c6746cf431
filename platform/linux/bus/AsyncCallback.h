#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <utility>

namespace hushbox {

/// Passes a function to one asynchronous GIO call: `invoke` as the callback, `data()` as its data.
///
/// The function must hold its owner weakly: GIO calls back even after the call was cancelled.
class AsyncCallback {
 public:
  using Function = std::function<void(GObject* source, GAsyncResult* result)>;

  AsyncCallback() = delete;

  /// The function is destroyed after GIO has called `invoke`.
  static gpointer data(Function function) { return new Function(std::move(function)); }

  static void invoke(GObject* source, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Function> function(static_cast<Function*>(data));
    (*function)(source, result);
  }
};

}  // namespace hushbox
