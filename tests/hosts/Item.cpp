// A program that shows Hushbox's item in one state after the other, for the pictures of the hosts.
//
//   hushbox-host-item ICON-FOLDER
//
// Reads the name of a state per line from standard input and shows it. Writes a line for each row
// of the menu that is chosen.

#include <glib-unix.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <map>
#include <string>

#include "app/LuchadorArt.h"
#include "platform/linux/bus/SessionBusConnection.h"
#include "platform/linux/menubar/StatusNotifierMenuBar.h"

namespace hushbox {
namespace {

struct PrintedLog final : UnifiedLog {
  void write(std::string_view, std::string_view, LogLevel, std::string_view text) override {
    std::printf("log %.*s\n", static_cast<int>(text.size()), text.data());
  }
};

const std::map<std::string, Image> states{
    {"connected", LuchadorArt::menuBarImage(false, true, {})},
    {"muted", LuchadorArt::menuBarImage(true, true, {})},
    {"disconnected", LuchadorArt::menuBarImage(false, false, {})},
    {"call-live", LuchadorArt::menuBarImage(false, true, Color::systemGreen)},
    {"call-muted", LuchadorArt::menuBarImage(true, true, Color::systemRed)}};

struct Item {
  explicit Item(const char* icons) : menuBar(bus, log, StatusNotifierMenuBar::panelTimeout, icons) {
    show("connected");
    showRows();
  }

  void show(const std::string& state) {
    const auto found = states.find(state);
    if (found == states.end()) return;
    menuBar.setIcon(found->second, "Hushbox: " + state);
    std::printf("shown %s\n", state.c_str());
  }

  void showRows() {
    using Kind = MenuRow::Kind;
    const auto print = [](const char* what) {
      return [what] { std::printf("chosen %s\n", what); };
    };
    menuBar.setRows({{.kind = Kind::text, .text = "Not on a call"},
                     {.kind = Kind::separator},
                     {.kind = Kind::toggle,
                      .text = "Launch at login",
                      .enabled = true,
                      .on = on,
                      .action =
                          [this, print] {
                            print("launch")();
                            on = !on;
                            showRows();
                          }},
                     {.kind = Kind::separator},
                     {.kind = Kind::button,
                      .text = "Quit Hushbox",
                      .enabled = true,
                      .keyEquivalent = "q",
                      .action = print("quit")}});
  }

  PrintedLog log;
  SessionBusConnection bus;
  StatusNotifierMenuBar menuBar;
  bool on = false;
};

}  // namespace
}  // namespace hushbox

int main(int count, char** arguments) {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  hushbox::Item item(count > 1 ? arguments[1] : "");
  GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
  struct Input {
    hushbox::Item& item;
    GMainLoop* loop;
  } input{item, loop};
  g_unix_fd_add(
      STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP),
      [](int, GIOCondition, gpointer data) -> gboolean {
        auto& [shown, running] = *static_cast<Input*>(data);
        std::string line;
        if (std::getline(std::cin, line)) {
          shown.show(line);
          return G_SOURCE_CONTINUE;
        }
        g_main_loop_quit(running);
        return G_SOURCE_REMOVE;
      },
      &input);
  g_main_loop_run(loop);
  g_main_loop_unref(loop);
  return 0;
}
