#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/teams/TeamsUIFixture.h"

namespace hushbox {
namespace {

// The rules of the search for the microphone button, written down a second time.

using Element = const SimulatedElement*;

/// Each of these is a character of its own, so a byte comparison is enough unless a combining mark
/// follows.
constexpr std::string_view combiningAcute = "\u0301";

bool occursAt(std::string_view text, std::size_t position, std::string_view word) {
  return text.substr(position).starts_with(word) &&
         !text.substr(position + word.size()).starts_with(combiningAcute);
}

bool startsWith(std::string_view text, std::string_view word) {
  return occursAt(text, 0, word);
}

bool contains(std::string_view text, std::string_view word) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (occursAt(text, i, word)) return true;
  }
  return false;
}

std::string lower(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

std::string textOf(Element element, const char* attribute) {
  const auto found = element->attributes.find(attribute);
  if (found == element->attributes.end()) return "";
  const auto* text = std::get_if<std::string>(&found->second);
  return text ? *text : "";
}

/// Returns the label that makes the element the microphone button; empty if it is not.
std::string microphoneLabel(Element element) {
  const std::string role = textOf(element, "AXRole");
  if (role != "AXButton" && role != "AXCheckBox") return "";
  const bool hasIdentifier = textOf(element, "AXDOMIdentifier") == "microphone-button";
  for (const char* attribute : {"AXDescription", "AXTitle", "AXHelp", "AXDOMIdentifier"}) {
    std::string label = textOf(element, attribute);
    const std::string low = lower(label);
    if (!startsWith(low, "mute") && !startsWith(low, "unmute")) continue;
    if (hasIdentifier || low == "mute" || low == "unmute" || contains(low, "mic") ||
        contains(low, "⌘") || contains(low, "shift")) {
      return label;
    }
  }
  return "";
}

/// Returns the elements that a walk visits, level by level, 40,000 at most.
std::vector<Element> visited(Element root) {
  std::vector<Element> all;
  for (std::vector<Element> level = {root}; !level.empty();) {
    std::vector<Element> below;
    for (Element element : level) {
      all.push_back(element);
      if (all.size() == 40'000) return all;
      if (element->attributes.contains("AXChildren")) continue;
      for (const auto& child : element->children) below.push_back(child.get());
    }
    level = std::move(below);
  }
  return all;
}

Element microphoneIn(Element root) {
  for (Element element : visited(root)) {
    if (!microphoneLabel(element).empty()) return element;
  }
  return nullptr;
}

// The random trees.

class RandomTree {
 public:
  explicit RandomTree(std::uint64_t seed) : random_(seed) {}

  /// Adds up to `count` elements below `root`, each to an element drawn from those so far.
  void grow(const SimulatedElementRef& root, std::size_t count) {
    std::vector<SimulatedElementRef> elements = {root};
    for (std::size_t i = draw(count + 1); i > 0; --i) {
      elements.push_back(elements[draw(elements.size())]->append("element", attributes()));
    }
  }

  std::size_t draw(std::size_t count) { return static_cast<std::size_t>(random_() % count); }
  bool oneIn(std::size_t count) { return draw(count) == 0; }

 private:
  SimulatedElement::Attributes attributes() {
    SimulatedElement::Attributes all;
    const std::array<const char*, 8> roles = {"AXButton", "AXCheckBox", "AXButton", "AXGroup",
                                              "axbutton", "AXButton ",  "",         "AXCheckBoxes"};
    if (!oneIn(8)) all["AXRole"] = attribute(roles[draw(roles.size())]);
    for (const char* name : {"AXDescription", "AXTitle", "AXHelp"}) {
      if (oneIn(3)) all[name] = attribute(label());
    }
    const std::array<std::string, 4> identifiers = {"microphone-button", "video-button",
                                                    "Microphone-Button", label()};
    if (oneIn(3)) all["AXDOMIdentifier"] = attribute(identifiers[draw(identifiers.size())]);
    if (oneIn(10)) all["AXChildren"] = unreadable();
    return all;
  }

  SimulatedAttribute attribute(std::string text) {
    return oneIn(10) ? unreadable() : SimulatedAttribute(std::move(text));
  }

  SimulatedAttribute unreadable() {
    const std::array<SimulatedAttribute, 3> kinds = {accessibility::cannotComplete,
                                                     OtherAttributeValue(), std::monostate()};
    return kinds[draw(kinds.size())];
  }

  std::string label() {
    const std::array<const char*, 22> pieces = {
        "mute",  "Mute",    "MUTE", "unmute", "Unmute", "un",   "mic",    "Mic", "m", "ic", "⌘",
        "shift", "+Shift+", "sh",   " ",      "(",      " all", "\u0301", "é",   "M", "t",  ""};
    std::string text;
    if (oneIn(2)) text = pieces[draw(5)];
    for (std::size_t i = draw(4); i > 0; --i) text += pieces[draw(pieces.size())];
    // At the start, a combining mark has nothing to combine with.
    return text.starts_with(combiningAcute) ? "x" + text : text;
  }

  std::mt19937_64 random_;
};

/// HUSHBOX_TREES in the environment sets another number.
std::uint64_t treeCount() {
  const char* const count = std::getenv("HUSHBOX_TREES");
  return count ? std::strtoull(count, nullptr, 10) : 800;
}

class TeamsUIRandomTreeTest : public TeamsUIFixture {
 protected:
  TeamsUIRandomTreeTest() { desk.journal.keepLines(false); }

  /// Whether the program finds, reads and presses the button that the rules say.
  void expectLikeTheRules() {
    pressed_ = nullptr;
    const Element microphone = microphoneIn(app.get());
    const std::string label = microphone ? microphoneLabel(microphone) : "";
    std::optional<bool> muted;
    if (microphone) muted = startsWith(lower(label), "unmute");
    EXPECT_EQ(TeamsUI::currentMuteState(), muted) << label;
    const auto result = TeamsUI::setMuted(std::nullopt);
    EXPECT_EQ(result, microphone ? TeamsUI::Result::pressed : TeamsUI::Result::noMeeting) << label;
    EXPECT_EQ(pressed_, microphone) << label;
    if (microphone) {
      EXPECT_EQ(desk.log.records().back().text, "Pressed Teams mic button '" + label + "' -> 0");
    }
  }

  void makePressable(const SimulatedElementRef& element) {
    element->perform = [this, self = element.get()](std::string_view) {
      pressed_ = self;
      return accessibility::success;
    };
    for (const auto& child : element->children) makePressable(child);
  }

 private:
  Element pressed_ = nullptr;
};

TEST_F(TeamsUIRandomTreeTest, FindsTheButtonThatTheRulesSay) {
  std::uint64_t found = 0;
  for (std::uint64_t seed = 1; seed <= treeCount() && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    app->removeChildren();
    RandomTree(seed).grow(app, 40);
    makePressable(app);
    // The button of the last tree has left the screen with it.
    expectLikeTheRules();
    if (microphoneIn(app.get())) ++found;
  }
  // Both outcomes are common.
  EXPECT_GT(found, treeCount() / 8);
  EXPECT_LT(found, treeCount() * 7 / 8);
}

TEST_F(TeamsUIRandomTreeTest, KeepsTheButtonWhileItQualifies) {
  for (std::uint64_t seed = 1; seed <= treeCount() / 3 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    app->removeChildren();
    RandomTree(seed).grow(app, 40);
    const Element first = microphoneIn(app.get());
    if (!first) continue;
    EXPECT_NE(TeamsUI::currentMuteState(), std::nullopt);
    // Another button, in front of all others, is not looked at.
    app->append("newcomer", button("Mute"));
    std::rotate(app->children.begin(), app->children.end() - 1, app->children.end());
    EXPECT_EQ(TeamsUI::currentMuteState(), startsWith(lower(microphoneLabel(first)), "unmute"));
    const_cast<SimulatedElement*>(first)->attributes["AXRole"] = std::string("AXGroup");
    makePressable(app);
    expectLikeTheRules();
  }
}

/// The position of the only button in a tree of random shape; the application is the first element.
class TeamsUIVisitLimitTest : public TeamsUIRandomTreeTest,
                              public testing::WithParamInterface<std::size_t> {};

TEST_P(TeamsUIVisitLimitTest, FindsTheButtonUpToThe40000thVisit) {
  RandomTree random(GetParam());
  std::vector<SimulatedElementRef> elements = {app};
  // Every level is complete before the next one begins, so this is the order of the visits.
  for (std::size_t parent = 0; elements.size() < 40'100; ++parent) {
    for (std::size_t i = 1 + random.draw(3); i > 0; --i) {
      elements.push_back(elements[parent]->append("plain"));
    }
  }
  elements[GetParam() - 1]->attributes = button("Unmute");
  EXPECT_EQ(TeamsUI::currentMuteState(), GetParam() <= 40'000 ? std::optional(true) : std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Position, TeamsUIVisitLimitTest,
                         testing::Values(2, 39'999, 40'000, 40'001, 40'002),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace hushbox
