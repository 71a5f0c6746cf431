#pragma once

#include <memory>
#include <string>
#include <vector>

#include "rehearsal/BrowserPage.h"
#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// How a page is framed.
enum class WindowKind {
  Window,  ///< An ordinary browser window of its own; its title ends in " - Chromium".
  Tab,     ///< A tab of the window that was used last.
  App,     ///< A window without browser controls, as an installed web app has; needs a display.
};

/// A real Chromium with a private profile, headless or on the session's display.
///
/// It is up with no window at all and stays up when its last window closes. Enable the
/// accessibility bus before starting it. Every call iterates the main context while it waits, and
/// throws DeskError when the browser is gone, refuses or is silent for 30 s.
class Browser {
 public:
  struct Options {
    bool headless = true;  ///< Without a window on the display; else the session needs one.
    std::vector<std::string> arguments;  ///< Further command line arguments.
  };

  /// Returns as soon as the process is started; the first call waits until it is up.
  explicit Browser(const Session& session) : Browser(session, Options{}) {}
  Browser(const Session& session, const Options& options);
  ~Browser();

  /// Opens a page and waits until it is loaded.
  std::unique_ptr<BrowserPage> open(const std::string& url, WindowKind kind = WindowKind::Window);

  /// The file:// address of one of the rehearsal's own pages, such as "decoy.html".
  static std::string pageUrl(const std::string& file);

  /// Where Teams is served from.
  static constexpr const char* teamsOrigin = "https://teams.microsoft.com";
  /// An address of Teams under which open() presents that page of the rehearsal's. The browser
  /// takes it for the real one (address, secure context), yet the debugging pipe answers every
  /// request to that host, so nothing leaves the machine.
  static std::string teamsUrl(const std::string& file);

  bool isHeadless() const { return options_.headless; }
  pid_t pid() const { return process_->pid(); }
  bool isRunning() const { return process_->isRunning(); }
  /// Stops the browser and its renderers in their tracks; nothing answers until thaw().
  void freeze() { process_->freeze(); }
  void thaw() { process_->thaw(); }
  /// Ends the browser as a crash would.
  void kill() { process_->kill(); }

  const std::shared_ptr<DevToolsPipe>& pipe() const { return pipe_; }

 private:
  void serveTeams();
  std::vector<std::string> commandLine() const;
  std::vector<std::string> pageTargets();
  std::string openTarget(const std::string& url, WindowKind kind);
  std::string openAppWindow(const std::string& url);

  const Session& session_;
  Options options_;
  std::shared_ptr<DevToolsPipe> pipe_;
  std::unique_ptr<ServerProcess> process_;
};

}  // namespace hushbox::rehearsal
