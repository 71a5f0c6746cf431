#include "platform/linux/audio/StateRequests.h"

namespace hushbox {

void StateRequests::sentForEvent() {
  ++events_;
  ++inProgress_;
}

void StateRequests::sentOtherwise() {
  isInconclusive_ = true;
  ++inProgress_;
}

StateRequests::Conclusion StateRequests::replied(bool differs) {
  if (differs) isInconclusive_ = true;
  if (--inProgress_ > 0) return Conclusion::none;
  if (events_ == 1 && !isInconclusive_ && !hasRequestedAgain_) {
    hasRequestedAgain_ = true;
    ++inProgress_;
    return Conclusion::requestAgain;
  }
  const bool isUndone = events_ == 2 && !isInconclusive_;
  *this = {};
  return isUndone ? Conclusion::undone : Conclusion::none;
}

}  // namespace hushbox
