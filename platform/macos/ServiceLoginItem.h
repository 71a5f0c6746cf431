#pragma once

#include "platform/LoginItem.h"

namespace hushbox {

/// The application's own login item at the service-management framework. Main thread only. The
/// system keeps the registration, by the bundle; a program outside one is `notFound` and refused.
///
/// The framework counts it as an error to ask for what already is. Here it is none: a change that
/// failed is looked at by the status it left.
class ServiceLoginItem final : public LoginItem {
 public:
  Status status() override;
  bool registerItem() override;
  bool unregisterItem() override;
};

}  // namespace hushbox
