#include "platform/linux/accessibility/EmbeddedPages.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/accessibility/AtspiPrograms.h"
#include "tests/platform/linux/fixtures/AccessibleProgramsFixture.h"

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A browser whose pages are in other processes, made of data.
class EmbeddedPagesTest : public AccessibleProgramsFixture {
 protected:
  static constexpr const char* pagesPath = "/org/a11y/webkit/accessible";
  static constexpr const char* ownedName =
      "org.gnome.Epiphany.Sandboxed.WebProcess-4b33d07a-d45f-41b6-b113-0f0091e0d9be";

  static GVariant* reference(const std::string& busName, const std::string& path) {
    return g_variant_new("(so)", busName.c_str(), path.c_str());
  }

  /// A process with Teams meetings in the browser's objects "/socket0", "/socket1" ...; their
  /// buttons are "/b0", "/b1" ...
  std::unique_ptr<AccessibleProgram> pages(const AccessibleProgram& browser, int count = 1) const {
    auto result = std::make_unique<AccessibleProgram>(accessibility_.address(), ownedName);
    setPages(*result, browser, 0, count);
    return result;
  }

  /// Only the pages from `first` up to `end` are open.
  static void setPages(AccessibleProgram& process, const AccessibleProgram& browser, int first,
                       int end) {
    std::string xml = "<node>\n";
    for (int i = first; i < end; ++i) {
      const std::string number = std::to_string(i);
      xml += "  <node name=\"page" + number + "\"/>\n";
      process.put(pagesPath + ("/page" + number), {.role = 20, .children = {"/frame" + number}});
      process.put("/frame" + number, {.role = 49, .children = {"/document" + number}});
      process.put(
          "/document" + number,
          {.role = 95, .documentAttributes = {{"URI", teamsAddress}}, .children = {"/b" + number}});
      process.put("/b" + number, button(label));
    }
    process.answerWith([xml = xml + "</node>", browserName = browser.busName()](
                           const std::string& path, const std::string& method) -> GVariant* {
      if (path == pagesPath && method == "Introspect") return g_variant_new("(s)", xml.c_str());
      const std::string pagePath = std::string(pagesPath) + "/page";
      if (!path.starts_with(pagePath)) return nullptr;
      // Of a page's root, only the parent and the children are read.
      if (method == "Get")
        return g_variant_new("(v)",
                             reference(browserName, "/socket" + path.substr(pagePath.size())));
      // The root of a page cannot be searched.
      return method == "GetMatches" ? g_variant_new("()") : nullptr;
    });
  }

  /// Has the browser name the roots of the process's pages as the children of its objects.
  static void embed(AccessibleProgram& browser, const std::string& busName) {
    browser.answerWith([busName](const std::string& path, const std::string& method) -> GVariant* {
      if (method != "GetChildAtIndex" || !path.starts_with("/socket")) return nullptr;
      return g_variant_new("(@(so))", reference(busName, pagesPath + ("/page" + path.substr(7))));
    });
  }

  std::vector<BusObject> found() {
    EXPECT_TRUE(connects(bus_));
    bus_.beginBudget();
    programs_.refresh();
    std::vector<BusObject> result;
    for (const AtspiProgram* host : programs_.hosts())
      result.insert(result.end(), host->pages.begin(), host->pages.end());
    return result;
  }

  /// Whether those pages are found: on a busy machine a process may reply too late at first.
  bool finds(const std::vector<BusObject>& pages) {
    return rehearsal::holdsWithin([&] { return found() == pages; }, rehearsal::serverTimeout);
  }

  static BusObject page(const AccessibleProgram& process, int number) {
    return {process.busName(), pagesPath + ("/page" + std::to_string(number))};
  }

  const std::unique_ptr<AccessibleProgram> epiphany_ = program("epiphany", "gtk");
  AtspiBus bus_;
  AtspiPrograms programs_{bus_};
};

TEST_F(EmbeddedPagesTest, ButtonInAPageIsReadAndPressed) {
  const auto process = pages(*epiphany_);
  embed(*epiphany_, ownedName);
  ASSERT_TRUE(readsLabel());
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_THAT(process->performed(), ElementsAre("/b0 0"));
  process->put("/b0", button(mutedLabel));
  EXPECT_EQ(reader_.read(), mutedLabel);
}

TEST_F(EmbeddedPagesTest, PageOnlyCountsByItsAddress) {
  const auto process = pages(*epiphany_);
  embed(*epiphany_, ownedName);
  process->put("/document0", {.role = 95,
                              .name = "Calls | Microsoft Teams",
                              .documentAttributes = {{"URI", "https://www.example.org/"}},
                              .children = {"/b0"}});
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
}

TEST_F(EmbeddedPagesTest, PageThatTheBrowserDoesNotNameIsIgnored) {
  const auto process = pages(*epiphany_);
  EXPECT_THAT(found(), IsEmpty());
  embed(*epiphany_, ":1.9999");
  EXPECT_THAT(found(), IsEmpty());
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
  embed(*epiphany_, process->busName());
  EXPECT_TRUE(readsLabel());
}

TEST_F(EmbeddedPagesTest, PageThatNamesAnotherProgramIsIgnored) {
  const auto other = program("Editor", "gtk");
  const auto process = pages(*other);
  embed(*other, ownedName);
  embed(*epiphany_, ownedName);
  const int before = other->calls();
  EXPECT_THAT(found(), IsEmpty());
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
  // Its name and its toolkit, twice.
  EXPECT_LE(other->calls() - before, 4);
}

TEST_F(EmbeddedPagesTest, FollowsTheBrowserWhenItOpensAndClosesPages) {
  auto process = pages(*epiphany_);
  embed(*epiphany_, ownedName);
  EXPECT_TRUE(finds({page(*process, 0)}));
  setPages(*process, *epiphany_, 0, 2);
  EXPECT_TRUE(finds({page(*process, 0), page(*process, 1)}));
  setPages(*process, *epiphany_, 1, 2);
  EXPECT_TRUE(finds({page(*process, 1)}));
  setPages(*process, *epiphany_, 0, 0);
  EXPECT_TRUE(finds({}));
  setPages(*process, *epiphany_, 0, 1);
  EXPECT_TRUE(finds({page(*process, 0)}));
  process.reset();
  EXPECT_TRUE(finds({}));
}

TEST_F(EmbeddedPagesTest, IgnoresAListOfPagesThatIsTooLong) {
  const auto process = pages(*epiphany_);
  embed(*epiphany_, ownedName);
  process->answerWith([](const std::string& path, const std::string& method) -> GVariant* {
    if (method != "Introspect" || path != pagesPath) return nullptr;
    std::string xml;
    for (int i = 0; i < 100'000; ++i) xml += "<node name=\"page" + std::to_string(i) + "\"/>";
    return g_variant_new("(s)", xml.c_str());
  });
  EXPECT_THAT(found(), IsEmpty());
  EXPECT_EQ(process->calls(), 1);
}

TEST_F(EmbeddedPagesTest, KeepsThePagesOfAProcessThatDoesNotReply) {
  const auto process = pages(*epiphany_);
  embed(*epiphany_, ownedName);
  ASSERT_TRUE(finds({page(*process, 0)}));
  process->freeze();
  bus_.setTimeout(std::chrono::milliseconds{100});
  EXPECT_EQ(found().size(), 1U);
  process->thaw();
  EXPECT_TRUE(finds({page(*process, 0)}));
}

TEST_F(EmbeddedPagesTest, KnownPagesCostACallForAllAndOnePerProcess) {
  const auto process = pages(*epiphany_);
  embed(*epiphany_, ownedName);
  ASSERT_TRUE(finds({page(*process, 0)}));
  const auto before = bus_.callCount();
  ASSERT_EQ(found().size(), 1U);
  // The third is the registry's.
  EXPECT_EQ(bus_.callCount() - before, 3U);
}

using EmbeddedPagesOtherBrowserTest = AccessibleProgramsFixture;

TEST_F(EmbeddedPagesOtherBrowserTest, PagesAreNotLookedFor) {
  const auto browser = meeting();
  AtspiBus bus;
  AtspiPrograms programs(bus);
  ASSERT_TRUE(connects(bus));
  programs.refresh();
  ASSERT_EQ(programs.hosts().size(), 1U);
  const auto before = bus.callCount();
  programs.refresh();
  EXPECT_EQ(bus.callCount() - before, 1U);
}

}  // namespace
}  // namespace hushbox
