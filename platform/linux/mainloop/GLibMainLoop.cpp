#include "platform/linux/mainloop/GLibMainLoop.h"

#include <glib-unix.h>

#include <array>
#include <csignal>
#include <utility>

namespace hushbox {

GLibMainLoop::GLibMainLoop()
    : mainThread_(std::this_thread::get_id()), loop_(g_main_loop_new(nullptr, FALSE)) {}

GLibMainLoop::~GLibMainLoop() {
  finishUtilityWork();
  g_main_loop_unref(loop_);
}

Instant GLibMainLoop::now() const {
  return TimerQueue::now();
}

bool GLibMainLoop::isMainThread() const {
  return std::this_thread::get_id() == mainThread_;
}

RegistrationToken GLibMainLoop::scheduleRepeating(TimeInterval interval,
                                                  std::function<void()> block) {
  return RegistrationToken(timers_.runEvery(interval, std::move(block)));
}

void GLibMainLoop::mainAsyncAfter(TimeInterval delay, const WorkItem& item) {
  timers_.runAfter(delay, item.invocation());
}

void GLibMainLoop::mainAsync(std::function<void()> block) {
  mainQueue_.post(std::move(block));
}

void GLibMainLoop::utilityAsync(std::function<void()> block) {
  utilityQueue_.post(std::move(block));
}

int GLibMainLoop::run() {
  const auto onSignal = [](gpointer self) -> gboolean {
    static_cast<GLibMainLoop*>(self)->terminate();
    return G_SOURCE_CONTINUE;
  };
  const std::array signals{g_unix_signal_add(SIGTERM, onSignal, this),
                           g_unix_signal_add(SIGINT, onSignal, this),
                           g_unix_signal_add(SIGHUP, onSignal, this)};
  if (!terminating_) g_main_loop_run(loop_);
  terminating_ = false;
  for (const guint signal : signals) g_source_remove(signal);
  return 0;
}

void GLibMainLoop::terminate() {
  terminating_ = true;
  g_main_loop_quit(loop_);
}

void GLibMainLoop::setBeforeTimer(std::function<void(Instant due)> hook) {
  timers_.setBeforeBlock(std::move(hook));
}

void GLibMainLoop::finishUtilityWork() {
  utilityQueue_.finish();
}

}  // namespace hushbox
