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
  if (events_ == 1 && !isInconclusive_ && !hasRequestedAgain_) {
    hasRequestedAgain_ = true;
    ++inProgress_;
    return Conclusion::requestAgain;
  }
  const bool isSingleEvent = events_ == 1 && !isInconclusive_;
  const bool isUndone = events_ == 2 && !isInconclusive_;
  *this = {};
  if (isSingleEvent) secondEventUntil_ = time + maxEventDelay;
  return isUndone ? Conclusion::undone : Conclusion::none;
}

}  // namespace hushbox
