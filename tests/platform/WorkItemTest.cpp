#include "platform/WorkItem.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <utility>

namespace hushbox {
namespace {

TEST(WorkItem, RunsOnceHoweverOftenItIsInvoked) {
  int runs = 0;
  const WorkItem item([&] { ++runs; });
  const auto invocation = item.invocation();
  EXPECT_EQ(runs, 0);
  invocation();
  invocation();
  item.invocation()();
  EXPECT_EQ(runs, 1);
}

TEST(WorkItem, DoesNotRunOnceItIsCancelled) {
  int runs = 0;
  WorkItem item([&] { ++runs; });
  const auto invocation = item.invocation();
  item.cancel();
  item.cancel();
  invocation();
  EXPECT_EQ(runs, 0);
}

TEST(WorkItem, CancellingAfterTheRunHasNoEffect) {
  int runs = 0;
  WorkItem item([&] { ++runs; });
  item.invocation()();
  item.cancel();
  item.invocation()();
  EXPECT_EQ(runs, 1);
}

TEST(WorkItem, LettingGoOfItDoesNotKeepItFromRunning) {
  int runs = 0;
  auto item = std::make_optional<WorkItem>([&] { ++runs; });
  const auto invocation = item->invocation();
  item.reset();
  invocation();
  EXPECT_EQ(runs, 1);
}

TEST(WorkItem, RunningReleasesWhatTheBlockHolds) {
  const auto held = std::make_shared<int>();
  const WorkItem item([held] {});
  EXPECT_EQ(held.use_count(), 2);
  item.invocation()();
  EXPECT_EQ(held.use_count(), 1);
}

TEST(WorkItem, CancellingReleasesWhatTheBlockHolds) {
  const auto held = std::make_shared<int>();
  WorkItem item([held] {});
  const auto invocation = item.invocation();
  item.cancel();
  EXPECT_EQ(held.use_count(), 1);
}

TEST(WorkItem, ItsBlockMayLetGoOfItAndCancelIt) {
  auto held = std::make_shared<int>(3);
  int seen = 0;
  std::optional<WorkItem> item;
  item.emplace([&, held] {
    item->cancel();
    item.reset();
    seen = *held;
  });
  item->invocation()();
  EXPECT_EQ(seen, 3);
  EXPECT_EQ(held.use_count(), 1);
}

TEST(WorkItem, ItsBlockMayInvokeItAgainWithoutRunningTwice) {
  int runs = 0;
  std::optional<WorkItem> item;
  item.emplace([&] {
    ++runs;
    item->invocation()();
  });
  item->invocation()();
  EXPECT_EQ(runs, 1);
}

TEST(WorkItem, CancelsThroughWhereItHasMoved) {
  int runs = 0;
  WorkItem item([&] { ++runs; });
  const auto invocation = item.invocation();
  WorkItem moved = std::move(item);
  moved.cancel();
  invocation();
  EXPECT_EQ(runs, 0);
}

}  // namespace
}  // namespace hushbox
