#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <ostream>
#include <utility>

namespace hushbox {

/// Creates the driver of one platform, for each case of a contract.
template <typename Driver>
struct DriverFactory {
  std::function<std::unique_ptr<Driver>()> make;

  friend void PrintTo(const DriverFactory&, std::ostream* out) { *out << "a driver"; }
};

/// The base of the contracts: suites whose cases hold for an interface on every platform. Each
/// contract is a class derived from this one, in a header with its cases.
///
/// One source file per test binary includes such a header and instantiates it for a platform:
///
///     INSTANTIATE_TEST_SUITE_P(Linux, MainLoopContract, driverFactory<MainLoopDriver>([] {
///                                return std::make_unique<GLibMainLoopDriver>();
///                              }));
template <typename Driver>
class Contract : public testing::TestWithParam<DriverFactory<Driver>> {
 protected:
  void SetUp() override { driver_ = this->GetParam().make(); }
  void TearDown() override { driver_.reset(); }

  Driver& driver() { return *driver_; }

 private:
  std::unique_ptr<Driver> driver_;
};

/// Returns the parameter of an instantiation.
template <typename Driver>
auto driverFactory(std::function<std::unique_ptr<Driver>()> make) {
  return testing::Values(DriverFactory<Driver>{std::move(make)});
}

}  // namespace hushbox
