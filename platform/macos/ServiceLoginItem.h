#pragma once

#include "platform/LoginItem.h"

namespace hushbox {

/// The application's login item in the service-management framework. Main thread only. The system
/// stores the registration per bundle; outside a bundle the status is `notFound` and changes fail.
///
/// The framework fails to register what is registered already, and likewise to unregister. Here
/// both succeed: after a failure the status decides.
class ServiceLoginItem final : public LoginItem {
 public:
  Status status() override;
  bool registerItem() override;
  bool unregisterItem() override;
};

}  // namespace hushbox
