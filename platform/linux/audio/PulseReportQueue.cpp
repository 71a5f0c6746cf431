#include "platform/linux/audio/PulseReportQueue.h"

#include <algorithm>
#include <ctime>
#include <utility>

namespace hushbox {

struct PulseReportQueue::Source {
  GSource base;
  PulseReportQueue* queue;
};

PulseReportQueue::PulseReportQueue(std::function<void()> arrived)
    : arrived_(std::move(arrived)), source_([] {
        static GSourceFuncs functions{nullptr, nullptr, &dispatch, nullptr, nullptr, nullptr};
        return g_source_new(&functions, sizeof(Source));
      }()) {
  reinterpret_cast<Source*>(source_)->queue = this;
  g_source_attach(source_, nullptr);
}

PulseReportQueue::~PulseReportQueue() {
  g_source_destroy(source_);
  g_source_unref(source_);
}

Instant PulseReportQueue::now() {
  timespec time{};
  clock_gettime(CLOCK_BOOTTIME, &time);
  return Instant{std::chrono::seconds{time.tv_sec} + std::chrono::nanoseconds{time.tv_nsec}};
}

void PulseReportQueue::push(PulseReport report) {
  const std::lock_guard lock(mutex_);
  if (isClosed_) return;
  const auto later = std::ranges::upper_bound(reports_, report.time, {}, &PulseReport::time);
  reports_.insert(later, std::move(report));
  pushed_.notify_one();
  g_source_set_ready_time(source_, 0);
}

std::optional<PulseReport> PulseReportQueue::takeUntil(Instant latest) {
  const std::lock_guard lock(mutex_);
  if (reports_.empty() || reports_.front().time > latest) return std::nullopt;
  PulseReport report = std::move(reports_.front());
  reports_.pop_front();
  return report;
}

void PulseReportQueue::waitForReport(std::chrono::milliseconds timeout) {
  std::unique_lock lock(mutex_);
  pushed_.wait_for(lock, timeout, [this] { return !reports_.empty(); });
}

void PulseReportQueue::close() {
  const std::lock_guard lock(mutex_);
  isClosed_ = true;
  reports_.clear();
  g_source_destroy(source_);
}

gboolean PulseReportQueue::dispatch(GSource* source, GSourceFunc, gpointer) {
  g_source_set_ready_time(source, -1);
  reinterpret_cast<Source*>(source)->queue->arrived_();
  return G_SOURCE_CONTINUE;
}

}  // namespace hushbox
