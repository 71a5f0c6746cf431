#include "platform/linux/audio/StateRequests.h"

namespace hushbox {

void StateRequests::sentForEvent(Instant time) {
  if (time <= secondEventUntil_) ++events_;
  secondEventUntil_ = distantPast;
  ++events_;
  ++inProgress_;
}

void StateRequests::sentOtherwise() {
  isInconclusive_ = true;
  ++inProgress_;
}

StateRequests::Conclusion StateRequests::replied(bool differs, Instant time) {
  if (differs) isInconclusive_ = true;
  if (--inProgress_ > 0) return Conclusion::none;
  const int events = isInconclusive_ ? 0 : events_;
  if (events == 1 && !hasRequestedAgain_) {
    hasRequestedAgain_ = true;
    ++inProgress_;
    return Conclusion::requestAgain;
  }
  *this = {};
  if (events == 1) secondEventUntil_ = time + maxEventDelay;
  return events == 2 ? Conclusion::undone : Conclusion::none;
}

}  // namespace hushbox
