#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace hushbox::rehearsal {

class DevToolsPipe;

/// One page in a browser and the window around it; letting go of it leaves the page open.
///
/// Throws DeskError as the browser does; after close() too. Whoever uses a value that evaluate()
/// returned includes <nlohmann/json.hpp>.
class BrowserPage {
 public:
  /// Attaches to a page that is open.
  BrowserPage(std::shared_ptr<DevToolsPipe> pipe, std::string target);

  /// The value of a JavaScript expression; a promise is awaited, an exception thrown as DeskError.
  nlohmann::json evaluate(const std::string& expression);

  /// Loads a page at an address of Teams, which the browser answers with a file of the rehearsal:
  /// see Browser::teamsUrl(). Returns once the answer has begun to arrive.
  void navigateToTeams(const std::string& url);

  /// A real mouse click in the middle of the element that the CSS selector finds.
  void click(const std::string& selector);

  /// Whether the page knows itself to be hidden: minimised, covered, or in a tab behind.
  bool isHidden();

  /// Minimises the window and waits until the page is hidden; works headless too.
  void minimise();
  /// Puts a minimised window back and waits until the page is shown.
  void restore();
  /// Opens another window of the same browser that covers the whole display and waits until this
  /// page is hidden. Needs a display. Close the returned page to uncover.
  std::unique_ptr<BrowserPage> cover();

  /// Closes the page, and its window with it if it was the last tab.
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
