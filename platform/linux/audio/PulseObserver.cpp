#include "platform/linux/audio/PulseObserver.h"

#include <algorithm>
#include <utility>

namespace hushbox {
namespace {

// A stream that starts or stops changes the state of its source, perhaps twice in a moment.
constexpr std::chrono::milliseconds streamEventEffect{100};

// Releases the operation: replies arrive through the request's callbacks. Returns false if the
// request could not be sent.
bool sent(pa_operation* operation) {
  if (operation == nullptr) return false;
  pa_operation_unref(operation);
  return true;
}

}  // namespace

PulseObserver::PulseObserver(std::shared_ptr<PulseReportQueue> reports)
    : reports_(std::move(reports)), loop_(pa_mainloop_new()) {}

PulseObserver::~PulseObserver() {
  pa_mainloop_free(loop_);
}

void PulseObserver::run() {
  Client& client = *this;
  connection_.emplace(*pa_mainloop_get_api(loop_), client);
  while (!isStopped_) {
    if (!connection_->isOpen() && !std::exchange(hasFailed_, true)) {
      reports_->push({PulseReportQueue::now(), PulseServerLoss{}});
    }
    pa_mainloop_prepare(loop_, microsecondsToWait());
    pa_mainloop_poll(loop_);
    pa_mainloop_dispatch(loop_);
    if (std::exchange(needsToReconnect_, false)) connection_->reconnect();
    sendWrites();
    reportSettledSources();
  }
  connection_.reset();
}

void PulseObserver::write(const PulseWrite& write) {
  const std::lock_guard lock(mutex_);
  writes_.push_back(write);
  pa_mainloop_wakeup(loop_);
}

void PulseObserver::stop() {
  isStopped_ = true;
  pa_mainloop_wakeup(loop_);
}

void PulseObserver::connected(pa_context& context) {
  list_ = {++connectionCount_, {}, {}};
  listTime_ = PulseReportQueue::now();
  pa_context_set_subscribe_callback(&context, &onEvent, this);
  constexpr auto facilities = static_cast<pa_subscription_mask_t>(
      PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_SOURCE_OUTPUT);
  sent(pa_context_subscribe(&context, facilities, nullptr, nullptr));
  sent(pa_context_get_source_output_info_list(&context, &onListedStream, this));
  sent(pa_context_get_source_info_list(&context, &onListedSource, this));
}

void PulseObserver::disconnected() {
  hasFailed_ = true;
  sources_.clear();
  requests_.clear();
  reports_->push({PulseReportQueue::now(), PulseServerLoss{}});
}

bool PulseObserver::noteTimeout(pa_context* context, int last) {
  if (last >= 0 || pa_context_errno(context) != PA_ERR_TIMEOUT) return false;
  needsToReconnect_ = true;
  return true;
}

void PulseObserver::onEvent(pa_context* context, pa_subscription_event_type_t type,
                            std::uint32_t index, void* self) {
  auto& observer = *static_cast<PulseObserver*>(self);
  const Instant now = PulseReportQueue::now();
  const bool isSource =
      (type & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) == PA_SUBSCRIPTION_EVENT_SOURCE;
  const bool isRemoval = (type & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_REMOVE;
  if (!isSource) observer.lastStreamEvent_ = now;
  if (isSource && isRemoval) {
    observer.removeSource(index, now);
  } else if (isSource) {
    observer.sourceEvent(index, now);
  } else if (isRemoval) {
    observer.reports_->push({now, PulseStreamRemoval{index}});
  } else {
    sent(pa_context_get_source_output_info(
        context, index, &onStream, observer.addRequest({&observer, PA_INVALID_INDEX, now, false})));
  }
}

void PulseObserver::onListedStream(pa_context* context, const pa_source_output_info* info, int last,
                                   void* self) {
  auto& observer = *static_cast<PulseObserver*>(self);
  if (observer.noteTimeout(context, last) || last != 0) return;
  observer.list_.streams.emplace_back(*info);
}

void PulseObserver::onListedSource(pa_context* context, const pa_source_info* info, int last,
                                   void* self) {
  auto& observer = *static_cast<PulseObserver*>(self);
  if (observer.noteTimeout(context, last)) return;
  if (last == 0) {
    observer.list_.sources.emplace_back(*info);
  } else {
    observer.listComplete();
  }
}

void PulseObserver::onStream(pa_context* context, const pa_source_output_info* info, int last,
                             void* request) {
  const Request& sentRequest = *static_cast<Request*>(request);
  PulseObserver& observer = *sentRequest.observer;
  if (observer.noteTimeout(context, last)) return;
  if (last != 0) return observer.remove(&sentRequest);
  const PulseStreamReport report(*info);
  observer.reports_->push({sentRequest.time, report});
  // The state of the source once the stream runs on it shows whether an earlier write took effect.
  const auto source = observer.sources_.find(report.source);
  if (!report.records || source == observer.sources_.end()) return;
  source->second.requests.sentOtherwise();
  observer.requestSource(report.source, PulseReportQueue::now(), true);
}

void PulseObserver::onSource(pa_context* context, const pa_source_info* info, int last,
                             void* request) {
  const Request& sentRequest = *static_cast<Request*>(request);
  PulseObserver& observer = *sentRequest.observer;
  if (observer.noteTimeout(context, last)) return;
  if (last == 0) return observer.sourceReplied(sentRequest, *info);
  const auto source = observer.sources_.find(sentRequest.source);
  if (last < 0 && sentRequest.isCounted && source != observer.sources_.end()) {
    source->second.requests.replied(true, PulseReportQueue::now());
  }
  observer.remove(&sentRequest);
}

void PulseObserver::sourceEvent(std::uint32_t index, Instant time) {
  const auto source = sources_.find(index);
  const bool isKnown = source != sources_.end();
  if (isKnown) source->second.requests.sentForEvent(time);
  requestSource(index, time, isKnown);
}

void PulseObserver::requestSource(std::uint32_t index, Instant time, bool isCounted) {
  sent(pa_context_get_source_info_by_index(connection_->context(), index, &onSource,
                                           addRequest({this, index, time, isCounted})));
}

PulseObserver::Request* PulseObserver::addRequest(const Request& request) {
  return &requests_.emplace_back(request);
}

void PulseObserver::remove(const Request* request) {
  requests_.remove_if([&](const Request& one) { return &one == request; });
}

void PulseObserver::listComplete() {
  for (const PulseSourceReport& source : list_.sources) addSource(source, std::nullopt);
  if (hasFailed_) {
    // The server has just started and its sources with it.
    for (const PulseSourceReport& source : std::exchange(list_.sources, {})) {
      sources_.erase(source.index);
      addSource(source, PulseReportQueue::now() + settleTime);
    }
  }
  reports_->push({listTime_, std::move(list_)});
}

void PulseObserver::sourceReplied(const Request& request, const PulseSourceReport& report) {
  const auto found = sources_.find(report.index);
  if (found == sources_.end()) {
    return addSource(report, PulseReportQueue::now() + settleTime);
  }
  KnownSource& source = found->second;
  using Conclusion = StateRequests::Conclusion;
  Conclusion conclusion = Conclusion::none;
  if (request.isCounted) {
    conclusion = source.requests.replied(!report.isSame(source.report), PulseReportQueue::now());
  }
  if (conclusion == Conclusion::requestAgain) requestSource(report.index, request.time, true);
  if (!pa_cvolume_valid(&report.volume)) return;
  source.report = report;
  if (source.settled) {
    source.settled = std::min(PulseReportQueue::now() + settleTime, source.latestSettled);
    return;
  }
  // A source that nothing records from may be suspended and resumed, which leaves the same traces.
  if (conclusion == Conclusion::undone && report.isRunning &&
      request.time - lastStreamEvent_ > streamEventEffect) {
    reports_->push({request.time, PulseVolumeBounce{report.index}});
  }
  reports_->push({request.time, report});
}

void PulseObserver::addSource(const PulseSourceReport& report, std::optional<Instant> settled) {
  // A source without channels is not fully set up yet; an event follows when it is.
  if (report.isMonitor || !pa_cvolume_valid(&report.volume)) return;
  sources_.insert_or_assign(
      report.index, KnownSource{report, {}, settled, PulseReportQueue::now() + maxSettleTime});
}

void PulseObserver::removeSource(std::uint32_t index, Instant time) {
  const auto source = sources_.find(index);
  if (source == sources_.end()) return;
  const bool isReported = !source->second.settled;
  sources_.erase(source);
  if (isReported) reports_->push({time, PulseSourceRemoval{index}});
}

void PulseObserver::reportSettledSources() {
  const Instant now = PulseReportQueue::now();
  for (auto& [index, source] : sources_) {
    if (!source.settled || *source.settled > now) continue;
    source.settled = std::nullopt;
    reports_->push({now, source.report});
  }
}

int PulseObserver::microsecondsToWait() const {
  std::optional<Instant> next;
  for (const auto& [index, source] : sources_) {
    if (source.settled && (!next || *source.settled < *next)) next = source.settled;
  }
  if (!next) return -1;
  const auto span =
      std::chrono::ceil<std::chrono::microseconds>(*next - PulseReportQueue::now()).count();
  return static_cast<int>(std::max<std::int64_t>(span, 0));
}

void PulseObserver::sendWrites() {
  std::vector<PulseWrite> writes;
  {
    const std::lock_guard lock(mutex_);
    writes.swap(writes_);
  }
  for (const PulseWrite& write : writes) send(write);
}

void PulseObserver::send(const PulseWrite& write) {
  pa_context* const context = connection_->context();
  if (context == nullptr || write.connection != connectionCount_) return;
  if (write.volume) {
    sent(pa_context_set_source_volume_by_index(context, write.source, &*write.volume, nullptr,
                                               nullptr));
  }
  // The switch comes second; otherwise the old level would be audible for a moment.
  if (write.muteSwitch) {
    sent(pa_context_set_source_mute_by_index(context, write.source, *write.muteSwitch ? 1 : 0,
                                             nullptr, nullptr));
  }
}

}  // namespace hushbox
