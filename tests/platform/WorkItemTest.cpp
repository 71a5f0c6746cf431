#include "platform/WorkItem.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <utility>

namespace hushbox {
namespace {

TEST(WorkItemTest, RunsOnlyOnce) {
  int runs = 0;
  const WorkItem item([&] { ++runs; });
  const auto invocation = item.invocation();
  EXPECT_EQ(runs, 0);
  invocation();
  invocation();
  item.invocation()();
  EXPECT_EQ(runs, 1);
}

TEST(WorkItemTest, DoesNotRunAfterCancellation) {
  int runs = 0;
  WorkItem item([&] { ++runs; });
  const auto invocation = item.invocation();
  item.cancel();
  item.cancel();
  invocation();
  EXPECT_EQ(runs, 0);
}

TEST(WorkItemTest, CancellingAfterTheRunHasNoEffect) {
  int runs = 0;
  WorkItem item([&] { ++runs; });
  item.invocation()();
  item.cancel();
  item.invocation()();
  EXPECT_EQ(runs, 1);
}

TEST(WorkItemTest, DestroyingItDoesNotCancelIt) {
  int runs = 0;
  auto item = std::make_optional<WorkItem>([&] { ++runs; });
  const auto invocation = item->invocation();
  item.reset();
  invocation();
  EXPECT_EQ(runs, 1);
}

TEST(WorkItemTest, RunningDestroysTheBlock) {
  const auto held = std::make_shared<int>();
  const WorkItem item([held] {});
  EXPECT_EQ(held.use_count(), 2);
  item.invocation()();
  EXPECT_EQ(held.use_count(), 1);
}

TEST(WorkItemTest, CancellingDestroysTheBlock) {
  const auto held = std::make_shared<int>();
  WorkItem item([held] {});
  const auto invocation = item.invocation();
  item.cancel();
  EXPECT_EQ(held.use_count(), 1);
}

TEST(WorkItemTest, BlockMayCancelAndDestroyItsItem) {
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

TEST(WorkItemTest, BlockMayInvokeItsItemWithoutRunningTwice) {
  int runs = 0;
  std::optional<WorkItem> item;
  item.emplace([&] {
    ++runs;
    item->invocation()();
  });
  item->invocation()();
  EXPECT_EQ(runs, 1);
}

TEST(WorkItemTest, MovedItemCanBeCancelled) {
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
