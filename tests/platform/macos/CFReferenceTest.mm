#include "platform/macos/CFReference.h"

#import <Foundation/Foundation.h>

#include <optional>
#include <utility>

#include "tests/platform/macos/MacFixture.h"

namespace hushbox {
namespace {

using Reference = CFReference<CFTypeRef>;

class CFReferenceTest : public MacFixture {
 protected:
  /// Returns an object with one reference, which the caller owns.
  static CFTypeRef made() { return (__bridge_retained CFTypeRef)[[NSMutableArray alloc] init]; }
  static long live() { return doubles::liveObjects("NSMutableArray"); }
};

TEST_F(CFReferenceTest, AdoptedObjectIsReleasedOnce) {
  {
    const auto reference = Reference::adopting(made());
    EXPECT_TRUE(reference);
    EXPECT_EQ(live(), 1);
  }
  EXPECT_EQ(live(), 0);
}

TEST_F(CFReferenceTest, RetainedObjectOutlivesItsOwner) {
  std::optional owner = Reference::adopting(made());
  {
    const auto reference = Reference::retaining(owner->get());
    owner.reset();
    EXPECT_EQ(live(), 1);
  }
  EXPECT_EQ(live(), 0);
}

TEST_F(CFReferenceTest, MoveTransfersTheReference) {
  auto first = Reference::adopting(made());
  {
    const auto second = std::move(first);
    EXPECT_FALSE(first);
    EXPECT_TRUE(second);
  }
  EXPECT_EQ(live(), 0);
}

TEST_F(CFReferenceTest, NullIsNeitherRetainedNorReleased) {
  EXPECT_FALSE(Reference::retaining(nullptr));
  EXPECT_FALSE(Reference::adopting(nullptr));
  EXPECT_FALSE(Reference());
}

}  // namespace
}  // namespace hushbox
