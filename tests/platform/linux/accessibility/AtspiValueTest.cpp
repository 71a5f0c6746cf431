#include "platform/linux/accessibility/AtspiValue.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/accessibility/AtspiFacts.h"

namespace hushbox {
namespace {

/// A reply with that many objects of ":1.5".
VariantPointer replyWithObjects(int count) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a(so)"));
  for (int i = 0; i < count; ++i)
    g_variant_builder_add(&builder, "(so)", ":1.5", ("/" + std::to_string(i)).c_str());
  return VariantPointer(g_variant_ref_sink(g_variant_new("(a(so))", &builder)));
}

TEST(AtspiValueTest, TakesTheFirstOfAHundredThousandObjects) {
  const auto objects = atspi_value::objects(replyWithObjects(100'000).get(), ":1.5", 10'000);
  ASSERT_EQ(objects.size(), 10'000U);
  EXPECT_EQ(objects.front().path, "/0");
  EXPECT_EQ(objects.back().path, "/9999");
}

TEST(AtspiValueTest, LeavesOutObjectsOfAnotherProgram) {
  EXPECT_TRUE(atspi_value::objects(replyWithObjects(3).get(), ":1.6", 10'000).empty());
}

TEST(AtspiValueTest, TextsBeyondTheLimitAreEmpty) {
  const auto textOf = [](std::size_t length) {
    const VariantPointer reply(
        g_variant_ref_sink(g_variant_new("(s)", std::string(length, 'x').c_str())));
    return atspi_value::text(reply.get()).size();
  };
  EXPECT_EQ(textOf(atspi_value::maxTextBytes), atspi_value::maxTextBytes);
  EXPECT_EQ(textOf(atspi_value::maxTextBytes + 1), 0U);
  EXPECT_EQ(textOf(1 << 20), 0U);
}

TEST(AtspiFactsTest, StatusSaysWhetherTheProgramMayReplyLater) {
  using Outcome = BusReply::Outcome;
  EXPECT_EQ(statusOf({.outcome = Outcome::replied}), accessibility::success);
  EXPECT_EQ(statusOf({.outcome = Outcome::timedOut}), accessibility::cannotComplete);
  EXPECT_EQ(statusOf({.outcome = Outcome::refused}), accessibility::invalidElement);
  EXPECT_EQ(statusOf({.outcome = Outcome::unreachable}), accessibility::invalidElement);
}

TEST(AtspiValueTest, RepliesWithoutExactlyOneValueAreNoText) {
  for (GVariant* const reply :
       {g_variant_new("()"), g_variant_new("(ss)", "Mute", "Mute"), g_variant_new("(u)", 1U)}) {
    EXPECT_EQ(atspi_value::text(VariantPointer(g_variant_ref_sink(reply)).get()), "");
  }
}

TEST(AtspiValueTest, TakesOnlyNodesThatArePartOfAPath) {
  const VariantPointer reply(g_variant_ref_sink(g_variant_new(
      "(s)",
      "<node>\n <node name=\"a_1\"/><node name=\"\"/><node name=\"b/c\"/><node name=\"d-e\"/>"
      "<node name=\"f\"></node><node name=\"g\"/><node name=\"h")));
  EXPECT_EQ(atspi_value::nodes(reply.get(), 10), (std::vector<std::string>{"a_1", "f", "g"}));
  EXPECT_EQ(atspi_value::nodes(reply.get(), 2), (std::vector<std::string>{"a_1", "f"}));
  EXPECT_TRUE(atspi_value::nodes(reply.get(), 0).empty());
}

TEST(AtspiValueTest, TakesTheFirstTextsThatContainThePart) {
  const char* const texts[] = {"a.x.1", "b.y.2", "c.x.3", "d.x.4", nullptr};
  const VariantPointer reply(g_variant_ref_sink(g_variant_new("(^as)", texts)));
  EXPECT_EQ(atspi_value::textsWith(reply.get(), ".x.", 2),
            (std::vector<std::string>{"a.x.1", "c.x.3"}));
}

TEST(AtspiValueTest, NullObjectIsNoObject) {
  const auto object = [](const char* path) {
    const VariantPointer reply(g_variant_ref_sink(g_variant_new("((so))", ":1.5", path)));
    return atspi_value::plainObject(reply.get());
  };
  EXPECT_EQ(object("/a"), (BusObject{":1.5", "/a"}));
  EXPECT_EQ(object("/org/a11y/atspi/null"), std::nullopt);
}

}  // namespace
}  // namespace hushbox
