#include "support/Lifetime.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace hushbox {
namespace {

TEST(LifetimeTest, CallbackRunsWhileItsOwnerLives) {
  const Lifetime lifetime;
  int calls = 0;
  const std::function<void()> callback = lifetime.weakly([&] { ++calls; });
  callback();
  callback();
  EXPECT_EQ(calls, 2);
}

TEST(LifetimeTest, CallbackDoesNothingOnceItsOwnerIsDestroyed) {
  auto lifetime = std::make_optional<Lifetime>();
  int calls = 0;
  const std::function<void()> callback = lifetime->weakly([&] { ++calls; });
  lifetime.reset();
  callback();
  EXPECT_EQ(calls, 0);
}

TEST(LifetimeTest, CopyOfACallbackHoldsTheOwnerWeakly) {
  auto lifetime = std::make_optional<Lifetime>();
  int calls = 0;
  const auto callback = lifetime->weakly([&] { ++calls; });
  const auto copy = callback;
  copy();
  lifetime.reset();
  copy();
  EXPECT_EQ(calls, 1);
}

TEST(LifetimeTest, CallbackDependsOnItsOwnOwnerOnly) {
  const Lifetime living;
  auto gone = std::make_optional<Lifetime>();
  std::string calls;
  const auto first = living.weakly([&] { calls += "living"; });
  const auto second = gone->weakly([&] { calls += "gone"; });
  gone.reset();
  first();
  second();
  EXPECT_EQ(calls, "living");
}

TEST(LifetimeTest, ArgumentsAreForwarded) {
  const Lifetime lifetime;
  std::string seen;
  const auto callback = lifetime.weakly([&](int number, std::unique_ptr<std::string> text) {
    seen = *text + std::to_string(number);
  });
  callback(2, std::make_unique<std::string>("text"));
  EXPECT_EQ(seen, "text2");
}

TEST(LifetimeTest, OwnerMayBeDestroyedInItsOwnCallback) {
  auto lifetime = std::make_optional<Lifetime>();
  int calls = 0;
  const std::function<void()> callback = lifetime->weakly([&] {
    lifetime.reset();
    ++calls;
  });
  callback();
  callback();
  EXPECT_EQ(calls, 1);
}

TEST(LifetimeTest, LifetimeInTheSamePlaceIsAnotherOwner) {
  auto lifetime = std::make_optional<Lifetime>();
  int calls = 0;
  const auto callback = lifetime->weakly([&] { ++calls; });
  lifetime.emplace();
  callback();
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace hushbox
