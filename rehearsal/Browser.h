#pragma once

#include <memory>
#include <string>
#include <vector>

#include "rehearsal/BrowserPage.h"
#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// The kind of window in which a page is opened.
enum class WindowKind {
  Window,  ///< A new ordinary browser window; its title ends in " - Chromium".
  Tab,     ///< A tab in the most recently used window.
  App,     ///< A window without browser controls, as for an installed web app; needs a display.
};

/// A real Chromium with a private profile, headless or on the session's display.
///
/// It starts without a window and keeps running when its last window closes. Enable accessibility
/// before starting it. Every call runs the main context while it waits, and throws DeskError if the
/// browser has exited, returns an error or does not reply within 30 s.
class Browser {
 public:
  struct Options {
    bool headless = true;                  ///< Otherwise the session needs a display.
    std::vector<std::string> arguments{};  ///< Additional command line arguments.
    /// The profile's folder in the session's folder. Browsers with the same profile are one.
    std::string profile = "chromium";
  };

  /// Starts the process and returns; the first call waits until the browser replies.
  explicit Browser(const Session& session) : Browser(session, Options{}) {}
  Browser(const Session& session, const Options& options);
  ~Browser();

  /// Opens a page and waits until it has loaded.
  std::unique_ptr<BrowserPage> open(const std::string& url, WindowKind kind = WindowKind::Window);

  /// The file:// URL of one of the rehearsal's own pages, such as "decoy.html".
  static std::string pageUrl(const std::string& file);

  /// The origin of Teams' addresses.
  static constexpr const char* teamsOrigin = "https://teams.microsoft.com";
  /// A Teams address at which open() shows the rehearsal's page `file`. To the browser the address
  /// is the real one (URL, secure context), but the debugging pipe answers every request to that
  /// host, so nothing leaves the machine.
  static std::string teamsUrl(const std::string& file);

  pid_t pid() const { return process_->pid(); }
  bool isRunning() const { return process_->isRunning(); }
  /// Stops the browser and its renderers; they reply to nothing until thaw().
  void freeze() { process_->freeze(); }
  void thaw() { process_->thaw(); }
  /// Kills the browser's process for sound; the browser starts it again when it needs one. After a
  /// crash of the sound server the old one may find no microphone for a long time.
  void restartAudioService() const;
  /// Kills the browser with SIGKILL, as in a crash.
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
