#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace hushbox::rehearsal {

class DevToolsPipe;

/// One page in a browser and its window. Destroying this object leaves the page open.
///
/// Every call throws DeskError for the same reasons as Browser's, and after close(). To use the
/// result of evaluate(), include <nlohmann/json.hpp>.
class BrowserPage {
 public:
  /// Attaches to an open page; `target` is its id in the debugging protocol.
  BrowserPage(std::shared_ptr<DevToolsPipe> pipe, std::string target);

  /// Evaluates a JavaScript expression and returns its value. Waits for a promise; throws a
  /// JavaScript exception as DeskError.
  nlohmann::json evaluate(const std::string& expression);

  /// Navigates to a Teams address, which serves a file of the rehearsal: see Browser::teamsUrl().
  /// Returns when the response has begun to arrive.
  void navigateToTeams(const std::string& url);

  /// Clicks the middle of the element that matches the CSS selector, with real mouse events.
  void click(const std::string& selector);

  /// The page's document.hidden: true if it is minimised, covered or in a background tab.
  bool isHidden();

  /// Minimises the window and waits until the page is hidden. Also works headless.
  void minimise();
  /// Restores a minimised window and waits until the page is visible.
  void restore();
  /// Opens a maximised window of the same browser over this one and waits until this page is
  /// hidden. Needs a display. Close the returned page to uncover this one.
  std::unique_ptr<BrowserPage> cover();

  /// Closes the page, and the window if this was its last tab.
  void close();

 private:
  nlohmann::json call(const std::string& method, nlohmann::json parameters);
  void setWindow(const nlohmann::json& bounds);
  bool exists();

  std::shared_ptr<DevToolsPipe> pipe_;
  std::string target_;
  std::string session_;
};

}  // namespace hushbox::rehearsal
