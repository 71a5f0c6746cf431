#include "platform/Path.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Element = Path::Element;
using Kind = Path::Element::Kind;

TEST(PathTest, IsInitiallyEmptyWithDefaultAttributes) {
  const Path path;
  EXPECT_THAT(path.elements(), IsEmpty());
  EXPECT_EQ(path.windingRule(), Path::WindingRule::nonZero);
  EXPECT_EQ(path.lineWidth(), 1);
  EXPECT_EQ(path.lineCap(), Path::LineCap::butt);
}

TEST(PathTest, KeepsItsStepsInOrder) {
  Path path;
  path.moveTo({1, 2});
  path.lineTo({3, 4});
  path.curveTo({5, 6}, {7, 8}, {9, 10});
  path.close();
  EXPECT_THAT(
      path.elements(),
      ElementsAre(Element{Kind::move, {1, 2}, {}, {}}, Element{Kind::line, {3, 4}, {}, {}},
                  Element{Kind::curve, {5, 6}, {7, 8}, {9, 10}}, Element{Kind::close, {}, {}, {}}));
}

TEST(PathTest, AppendsTheStepsOfAnotherAndKeepsItsOwnAttributes) {
  Path path;
  path.moveTo({1, 1});
  path.setLineWidth(3);
  Path other;
  other.lineTo({2, 2});
  other.close();
  other.setWindingRule(Path::WindingRule::evenOdd);
  other.setLineWidth(9);
  other.setLineCap(Path::LineCap::round);
  path.append(other);
  EXPECT_THAT(path.elements(),
              ElementsAre(Element{Kind::move, {1, 1}, {}, {}}, Element{Kind::line, {2, 2}, {}, {}},
                          Element{Kind::close, {}, {}, {}}));
  EXPECT_EQ(path.windingRule(), Path::WindingRule::nonZero);
  EXPECT_EQ(path.lineWidth(), 3);
  EXPECT_EQ(path.lineCap(), Path::LineCap::butt);
  EXPECT_EQ(other.elements().size(), 2U);
}

TEST(PathTest, AppendsItselfOnce) {
  Path path;
  path.moveTo({1, 1});
  path.lineTo({2, 2});
  path.append(path);
  EXPECT_THAT(
      path.elements(),
      ElementsAre(Element{Kind::move, {1, 1}, {}, {}}, Element{Kind::line, {2, 2}, {}, {}},
                  Element{Kind::move, {1, 1}, {}, {}}, Element{Kind::line, {2, 2}, {}, {}}));
}

TEST(PathTest, TransformMapsEveryPointOfMovesLinesAndCurves) {
  Path path;
  path.moveTo({1, 2});
  path.lineTo({3, 4});
  path.curveTo({5, 6}, {7, 8}, {9, 10});
  path.close();
  path.transform({.m11 = 2, .m12 = 3, .m21 = 5, .m22 = 7, .tX = 100, .tY = 1000});
  // (x, y) becomes (2x + 5y + 100, 3x + 7y + 1000); points that a step does not use stay (0, 0).
  EXPECT_THAT(path.elements(),
              ElementsAre(Element{Kind::move, {112, 1017}, {}, {}},
                          Element{Kind::line, {126, 1037}, {}, {}},
                          Element{Kind::curve, {140, 1057}, {154, 1077}, {168, 1097}},
                          Element{Kind::close, {}, {}, {}}));
}

TEST(PathTest, IdentityTransformChangesNothing) {
  Path path;
  path.curveTo({5, 6}, {7, 8}, {9, 10});
  const auto before = path.elements();
  path.transform(AffineTransform());
  EXPECT_EQ(path.elements(), before);
}

TEST(PathTest, KeepsItsAttributes) {
  Path path;
  path.setWindingRule(Path::WindingRule::evenOdd);
  path.setLineWidth(22);
  path.setLineCap(Path::LineCap::round);
  EXPECT_EQ(path.windingRule(), Path::WindingRule::evenOdd);
  EXPECT_EQ(path.lineWidth(), 22);
  EXPECT_EQ(path.lineCap(), Path::LineCap::round);
  path.setWindingRule(Path::WindingRule::nonZero);
  path.setLineCap(Path::LineCap::butt);
  EXPECT_EQ(path.windingRule(), Path::WindingRule::nonZero);
  EXPECT_EQ(path.lineCap(), Path::LineCap::butt);
}

}  // namespace
}  // namespace hushbox
