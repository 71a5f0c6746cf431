#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <ostream>
#include <utility>

namespace hushbox {

/// Makes the driver of one platform for a case of a contract.
template <typename Driver>
struct DriverFactory {
  std::function<std::unique_ptr<Driver>()> make;

  friend void PrintTo(const DriverFactory&, std::ostream* out) { *out << "a driver"; }
};

/// The cases of a contract, which hold for every platform; derived from by one class a contract.
///
/// A header with cases is included by one source file a program, which names the platform:
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

/// The parameter of an instantiation.
template <typename Driver>
auto driverFactory(std::function<std::unique_ptr<Driver>()> make) {
  return testing::Values(DriverFactory<Driver>{std::move(make)});
}

}  // namespace hushbox
