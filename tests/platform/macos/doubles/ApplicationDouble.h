#pragma once

namespace hushbox::doubles {

/// The shared application. Main thread only.

/// Whether it was asked to terminate.
bool isTerminated();
/// Whether it is an agent: its activation policy is accessory.
bool isAgent();

void resetApplication();

}  // namespace hushbox::doubles
