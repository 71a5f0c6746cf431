#pragma once

#include "platform/LoginItem.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/SimulatedMainLoop.h"

namespace hushbox {

/// A login item in memory. Journal lines: "status -> 0", "register -> true", "unregister -> false".
class SimulatedLoginItem final : public LoginItem {
 public:
  SimulatedLoginItem(Journal& journal, const SimulatedMainLoop& loop)
      : journal_(journal), loop_(loop) {}

  /// The user changes the registration in the system's settings.
  void setStatus(Status status) { status_ = status; }
  /// The status after a successful registration; initially `enabled`.
  void setStatusAfterRegistration(Status status) { statusAfterRegistration_ = status; }
  /// Whether the system refuses a change, which then leaves the status as it is.
  void setRefusesRegistration(bool refuses) { refusesRegistration_ = refuses; }
  void setRefusesUnregistration(bool refuses) { refusesUnregistration_ = refuses; }
  /// The system refuses every change and then has the state that was not asked for.
  void setContradictsEveryChange() {
    refusesRegistration_ = refusesUnregistration_ = contradicts_ = true;
  }

  Status status() override;
  bool registerItem() override;
  bool unregisterItem() override;

 private:
  Journal& journal_;
  const SimulatedMainLoop& loop_;
  Status status_ = Status::notRegistered;
  Status statusAfterRegistration_ = Status::enabled;
  bool refusesRegistration_ = false;
  bool refusesUnregistration_ = false;
  bool contradicts_ = false;
};

}  // namespace hushbox
