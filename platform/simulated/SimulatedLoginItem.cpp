#include "platform/simulated/SimulatedLoginItem.h"

namespace hushbox {

LoginItem::Status SimulatedLoginItem::status() {
  loop_.requireMainThread("status");
  journal_.add("login", "status -> ", static_cast<int>(status_));
  return status_;
}

bool SimulatedLoginItem::registerItem() {
  loop_.requireMainThread("registerItem");
  journal_.add("login", "register -> ", !refusesRegistration_);
  if (contradicts_) status_ = Status::notRegistered;
  if (refusesRegistration_) return false;
  status_ = statusAfterRegistration_;
  return true;
}

bool SimulatedLoginItem::unregisterItem() {
  loop_.requireMainThread("unregisterItem");
  journal_.add("login", "unregister -> ", !refusesUnregistration_);
  if (contradicts_) status_ = Status::enabled;
  if (refusesUnregistration_) return false;
  status_ = Status::notRegistered;
  return true;
}

}  // namespace hushbox
