#include "rehearsal/Panel.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

constexpr const char* watcher = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
constexpr const char* settings = "org.xfce.Xfconf";
// All sizes are in pixels.

/// The window class of the process that shows the panel's tray.
constexpr const char* trayClass = "wrapper-2.0";
/// An empty tray is narrower.
constexpr int minItemWidth = 16;
/// Above the first and below the last row of a menu in GTK's default theme.
constexpr int menuPadding = 4;
constexpr int separatorHeight = 1;
/// The range is so narrow that a menu with one row more or less does not fit it.
constexpr int minRowHeight = 22;
constexpr int maxRowHeight = 28;
constexpr int panelHeight = 30;

constexpr const char* configuration = R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array"><value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="true"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="30"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="2"/><value type="int" value="1"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray">
      <property name="square-icons" type="bool" value="true"/>
      <property name="known-items" type="array"><value type="string" value="hushbox"/></property>
    </property>
    <property name="plugin-2" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
      <property name="style" type="uint" value="0"/>
    </property>
  </property>
</channel>
)";

}  // namespace

Panel::Panel(Session& session, Tone tone) : session_(session), bus_(session.busAddress()) {
  if (!session.hasDisplay()) throw DeskError("a panel needs a display");
  configure(session);
  process_ = session.start("panel.log", {"xfce4-panel", "--disable-wm-check"});
  process_->waitUntilReady([&] { return bus_.hasOwner(watcher); }, "a panel");
  setTone(tone);
  movePointerAway();
}

void Panel::configure(Session& session) const {
  const std::filesystem::path folder =
      session.home() / ".config" / "xfce4" / "xfconf" / "xfce-perchannel-xml";
  if (std::filesystem::exists(folder)) return;
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "xfce4-panel.xml") << configuration;
  session.allowActivation(settings);
}

void Panel::setTone(Tone tone) {
  run({"xfconf-query", "-c", "xfce4-panel", "-p", "/panels/dark-mode", "-s",
       tone == Tone::Dark ? "true" : "false"});
}

std::vector<std::string> Panel::items() const {
  if (!bus_.hasOwner(watcher)) return {};
  const Variant reply = bus_.call(watcher, watcherPath, "org.freedesktop.DBus.Properties", "Get",
                                  g_variant_new("(ss)", watcher, "RegisteredStatusNotifierItems"));
  GVariant* array = nullptr;
  g_variant_get(reply.get(), "(v)", &array);
  const Variant owned(array);
  std::vector<std::string> items;
  GVariantIter iterator;
  g_variant_iter_init(&iterator, array);
  const char* item = nullptr;
  while (g_variant_iter_next(&iterator, "&s", &item)) items.emplace_back(item);
  return items;
}

Panel::Area Panel::waitForItem() const {
  Area item;
  waitUntil(
      [&] {
        if (items().empty()) return false;
        const std::vector<Area> all = windows();
        const auto shown = std::ranges::find_if(
            all, [](const Area& area) { return area.y == 0 && area.width >= minItemWidth; });
        if (shown != all.end()) item = *shown;
        return shown != all.end();
      },
      serverTimeout, "an item in the panel");
  return item;
}

Panel::Area Panel::openMenu() {
  const Area item = waitForItem();
  // A panel that has not read the menu yet opens nothing, and one that is reading it again opens it
  // at its old size. A person would click again.
  repeatUntil(
      [&] {
        if (menu()) closeMenu();
        movePointerAway();
        click(item.x + item.width / 2, item.y + item.height / 2);
      },
      [&] { return rowHeight(itemMenu().rows()).has_value(); }, "a menu with all rows");
  return *menu();
}

std::optional<Panel::Area> Panel::menu() const {
  // A menu is right below the panel; a tool tip is further down.
  for (const Area& area : windows())
    if (area.y > 0 && area.y <= panelHeight + 2) return area;
  return std::nullopt;
}

Panel::Area Panel::waitForMenu() const {
  waitUntil([&] { return rowHeight(itemMenu().rows()).has_value(); }, serverTimeout,
            "a menu with all rows");
  return *menu();
}

int Panel::separatorsIn(const std::vector<Row>& rows, std::size_t count) {
  return static_cast<int>(std::count_if(rows.begin(),
                                        rows.begin() + static_cast<std::ptrdiff_t>(count),
                                        [](const Row& row) { return row.separator; }));
}

std::optional<int> Panel::rowHeight(const std::vector<Row>& rows) const {
  const std::optional<Area> area = menu();
  const int separators = separatorsIn(rows, rows.size());
  const int others = static_cast<int>(rows.size()) - separators;
  if (!area || others == 0) return std::nullopt;
  const int rowsHeight = area->height - 2 * menuPadding - separators * separatorHeight;
  const int height = rowsHeight / others;
  const bool fits = rowsHeight % others == 0 && height >= minRowHeight && height <= maxRowHeight;
  return fits ? std::optional(height) : std::nullopt;
}

std::string Panel::item() const {
  const std::vector<std::string> all = items();
  if (all.empty()) throw DeskError("the panel shows no item");
  return all.front().substr(0, all.front().find('/'));
}

ItemMenu Panel::itemMenu() const {
  return {bus_, item()};
}

std::string Panel::toolTip() const {
  const Variant reply =
      bus_.call(item(), "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
                g_variant_new("(ss)", "org.kde.StatusNotifierItem", "ToolTip"));
  GVariant* boxed = nullptr;
  g_variant_get(reply.get(), "(v)", &boxed);
  const Variant toolTip(boxed);
  const char* text = "";
  g_variant_get_child(toolTip.get(), 2, "&s", &text);
  return text;
}

void Panel::clickRow(const std::string& text) {
  const Area area = waitForMenu();
  const std::vector<Row> all = itemMenu().rows();
  const auto wanted = std::ranges::find(all, text, &Row::text);
  if (wanted == all.end()) throw DeskError("the menu has no row \"" + text + "\"");
  const auto index = static_cast<std::size_t>(wanted - all.begin());
  const int separators = separatorsIn(all, index);
  const int others = static_cast<int>(index) - separators;
  const int height = rowHeight(all).value_or(minRowHeight);
  const int top = menuPadding + separators * separatorHeight + others * height;
  click(area.x + area.width / 2, area.y + top + height / 2);
}

void Panel::chooseRow(const std::string& text) {
  repeatUntil(
      [&] {
        if (menu()) clickRow(text);
      },
      [&] { return !menu(); }, "the menu to close over \"" + text + "\"");
}

void Panel::repeatUntil(const std::function<void()>& action, const std::function<bool()>& effect,
                        const std::string& awaited) {
  // An action that is repeated before it has taken effect undoes it, so a slow machine gets more
  // time with each attempt.
  for (Milliseconds wait{3000}; wait <= serverTimeout; wait *= 2) {
    action();
    if (holdsWithin(effect, wait)) return;
  }
  throw DeskError("timed out waiting for " + awaited);
}

void Panel::closeMenu() {
  run({"xdotool", "key", "Escape"});
  waitUntil([&] { return !menu(); }, serverTimeout, "the menu to close");
  movePointerAway();
}

void Panel::movePointerAway() const {
  run({"xdotool", "mousemove", "600", "600"});
}

void Panel::picture(const Area& area, const std::filesystem::path& file) const {
  std::ostringstream geometry;
  geometry << area.width << 'x' << area.height << '+' << area.x << '+' << area.y;
  run({"import", "-window", "root", "-crop", geometry.str(), "+repage", file.string()});
  if (!std::filesystem::exists(file))
    throw DeskError("cannot write the screenshot " + file.string());
}

std::vector<Panel::Area> Panel::windows() const {
  std::istringstream reply(
      run({"xdotool", "search", "--onlyvisible", "--class", trayClass, "getwindowgeometry", "%@"}));
  // Two lines per window: "  Position: 1249,0 (screen: 0)" and "  Geometry: 31x30".
  std::vector<Area> areas;
  Area area;
  char between = 0;
  for (std::string line; std::getline(reply, line);) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    if (word == "Position:") words >> area.x >> between >> area.y;
    if (word == "Geometry:" && words >> area.width >> between >> area.height) areas.push_back(area);
  }
  return areas;
}

void Panel::click(int x, int y) const {
  run({"xdotool", "mousemove", std::to_string(x), std::to_string(y), "click", "1"});
}

std::string Panel::run(std::vector<std::string> command) const {
  const std::string name = command.front();
  const std::string log = "panel-tool-" + std::to_string(++runs_) + ".log";
  const auto process = session_.start(log, std::move(command));
  waitUntil([&] { return !process->isRunning(); }, serverTimeout, name + " to exit");
  std::ostringstream output;
  output << std::ifstream(session_.folder() / log).rdbuf();
  return output.str();
}

}  // namespace hushbox::rehearsal
