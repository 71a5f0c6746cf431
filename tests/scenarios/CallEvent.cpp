#include "tests/scenarios/CallEvent.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <sstream>
#include <utility>

namespace hushbox {
namespace {

using Kind = CallEvent::Kind;

constexpr std::int64_t millisecond = 1'000'000;

/// The kinds with their names in a printed history and how often each is drawn.
struct KindInfo {
  Kind kind;
  const char* name;
  unsigned weight;
};
constexpr KindInfo kinds[] = {{Kind::pass, "pass", 90},
                              {Kind::sleep, "sleep", 2},
                              {Kind::volume, "volume", 60},
                              {Kind::notify, "notify", 8},
                              {Kind::use, "use", 6},
                              {Kind::plug, "plug", 4},
                              {Kind::unplug, "unplug", 2},
                              {Kind::teams, "teams", 8},
                              {Kind::join, "join", 4},
                              {Kind::leave, "leave", 1},
                              {Kind::quit, "quit", 1},
                              {Kind::trust, "trust", 3},
                              {Kind::pressable, "pressable", 3},
                              {Kind::pressDelay, "press-delay", 2},
                              {Kind::readable, "readable", 4},
                              {Kind::writable, "writable", 3},
                              {Kind::useReadable, "use-readable", 3},
                              {Kind::announceDelay, "announce-delay", 3},
                              {Kind::restoreDelay, "restore-delay", 3}};

class Generator {
 public:
  explicit Generator(std::uint64_t seed) : random_(seed) {}

  CallEvent next() { return next(drawKind()); }
  CallEvent next(Kind kind) { return {kind, amount(kind)}; }

 private:
  /// From 0 to `count` - 1.
  std::int64_t draw(std::size_t count) { return static_cast<std::int64_t>(random_() % count); }

  template <std::size_t size>
  std::int64_t oneOf(const std::array<std::int64_t, size>& values) {
    return values[static_cast<std::size_t>(draw(size))];
  }

  /// True seven times out of eight, so that most histories mostly work.
  std::int64_t mostlyTrue() { return draw(8) > 0 ? 1 : 0; }

  Kind drawKind() {
    unsigned sum = 0;
    for (const KindInfo& info : kinds) sum += info.weight;
    auto left = static_cast<unsigned>(draw(sum));
    for (const KindInfo& info : kinds) {
      if (left < info.weight) return info.kind;
      left -= info.weight;
    }
    return Kind::pass;
  }

  std::int64_t amount(Kind kind) {
    switch (kind) {
      case Kind::pass:
        return drawPass();
      case Kind::sleep:
        return draw(20'000) * millisecond;
      case Kind::volume:
      case Kind::plug:
        return draw(2) == 0 ? 0 : oneOf(std::array<std::int64_t, 4>{20, 50, 80, 100});
      case Kind::use:
      case Kind::teams:
      case Kind::join:
        return draw(2);
      case Kind::trust:
      case Kind::pressable:
      case Kind::readable:
      case Kind::writable:
      case Kind::useReadable:
        return mostlyTrue();
      case Kind::pressDelay:
        return oneOf(std::array<std::int64_t, 4>{0, 0, 200, 1'500}) * millisecond;
      case Kind::announceDelay:
        return oneOf(std::array<std::int64_t, 6>{0, 0, 0, 100, 490, 500}) * millisecond;
      case Kind::restoreDelay: {
        const auto delay = oneOf(std::array<std::int64_t, 6>{-1, -1, -1, 50, 299, 300});
        return delay < 0 ? -1 : delay * millisecond;
      }
      case Kind::notify:
      case Kind::unplug:
      case Kind::leave:
      case Kind::quit:
        break;
    }
    return 0;
  }

  /// Mostly the program's own intervals, and one nanosecond to either side, so that deadlines meet.
  std::int64_t drawPass() {
    switch (draw(8)) {
      case 0:
      case 1:
        return 0;
      case 2:
        return draw(300) * millisecond;
      case 3:
        return oneOf(std::array<std::int64_t, 3>{500, 700, 1'000}) * millisecond + draw(3) - 1;
      case 4:
        return oneOf(std::array<std::int64_t, 2>{300, 490}) * millisecond + draw(3) - 1;
      default:
        return oneOf(std::array<std::int64_t, 3>{50, 100, 200}) * millisecond;
    }
  }

  std::mt19937_64 random_;
};

}  // namespace

CallHistory randomCallHistory(std::uint64_t seed, std::size_t length) {
  Generator generator(seed);
  CallHistory history = {
      generator.next(Kind::plug), {Kind::pass, 0}, generator.next(Kind::join), {Kind::use, 1}};
  while (history.size() < length) history.push_back(generator.next());
  return history;
}

std::string print(const CallHistory& history) {
  std::ostringstream text;
  for (const CallEvent& event : history) {
    const auto* info = std::find_if(std::begin(kinds), std::end(kinds),
                                    [&](const KindInfo& one) { return one.kind == event.kind; });
    if (&event != history.data()) text << ", ";
    text << info->name << ' ' << event.amount;
  }
  return text.str();
}

std::optional<CallHistory> parseCallHistory(std::string_view text) {
  CallHistory history;
  std::istringstream entries{std::string(text)};
  for (std::string entry; std::getline(entries, entry, ',');) {
    std::istringstream words(entry);
    std::string name;
    CallEvent event;
    if (!(words >> name >> event.amount)) return std::nullopt;
    if (std::string rest; words >> rest) return std::nullopt;
    const auto* info = std::find_if(std::begin(kinds), std::end(kinds),
                                    [&](const KindInfo& one) { return one.name == name; });
    if (info == std::end(kinds)) return std::nullopt;
    event.kind = info->kind;
    history.push_back(event);
  }
  return history;
}

}  // namespace hushbox
