#include "rehearsal/BrowserPage.h"

#include "rehearsal/Browser.h"
#include "rehearsal/DeskError.h"
#include "rehearsal/DevToolsPipe.h"

namespace hushbox::rehearsal {

BrowserPage::BrowserPage(std::shared_ptr<DevToolsPipe> pipe, std::string target)
    : pipe_(std::move(pipe)), target_(std::move(target)) {
  session_ = pipe_->call("Target.attachToTarget", {{"targetId", target_}, {"flatten", true}})
                 .at("sessionId");
}

nlohmann::json BrowserPage::call(const std::string& method, nlohmann::json parameters) {
  return pipe_->call(method, std::move(parameters), session_);
}

nlohmann::json BrowserPage::evaluate(const std::string& expression) {
  const nlohmann::json reply =
      call("Runtime.evaluate",
           {{"expression", expression}, {"returnByValue", true}, {"awaitPromise", true}});
  if (reply.contains("exceptionDetails")) {
    throw DeskError(expression + " threw: " + reply["exceptionDetails"].dump());
  }
  return reply.at("result").value("value", nlohmann::json());
}

void BrowserPage::navigateToTeams(const std::string& url) {
  call("Fetch.enable",
       {{"patterns", {{{"urlPattern", std::string(Browser::teamsOrigin) + "/*"}}}}});
  call("Page.navigate", {{"url", url}});
}

void BrowserPage::click(const std::string& selector) {
  const nlohmann::json middle = evaluate(
      "(() => { const r = document.querySelector(" + nlohmann::json(selector).dump() +
      ").getBoundingClientRect(); return {x: r.x + r.width / 2, y: r.y + r.height / 2}; })()");
  for (const char* type : {"mouseMoved", "mousePressed", "mouseReleased"}) {
    const bool moves = std::string(type) == "mouseMoved";
    call("Input.dispatchMouseEvent", {{"type", type},
                                      {"x", middle.at("x")},
                                      {"y", middle.at("y")},
                                      {"button", moves ? "none" : "left"},
                                      {"clickCount", moves ? 0 : 1}});
  }
}

bool BrowserPage::isHidden() {
  return evaluate("document.hidden").get<bool>();
}

void BrowserPage::setWindow(const nlohmann::json& bounds) {
  const nlohmann::json window = pipe_->call("Browser.getWindowForTarget", {{"targetId", target_}});
  pipe_->call("Browser.setWindowBounds", {{"windowId", window.at("windowId")}, {"bounds", bounds}});
}

void BrowserPage::minimise() {
  setWindow({{"windowState", "minimized"}});
  waitUntil([this] { return isHidden(); }, serverTimeout, "the window to be minimised");
}

void BrowserPage::restore() {
  setWindow({{"windowState", "normal"}});
  waitUntil([this] { return !isHidden(); }, serverTimeout, "the window to be restored");
}

std::unique_ptr<BrowserPage> BrowserPage::cover() {
  const nlohmann::json opened =
      pipe_->call("Target.createTarget", {{"url", "about:blank"}, {"newWindow", true}});
  auto above = std::make_unique<BrowserPage>(pipe_, opened.at("targetId"));
  above->setWindow({{"windowState", "maximized"}});
  const bool covered = holdsWithin([this] { return isHidden(); }, serverTimeout);
  if (covered) return above;
  above->close();
  throw DeskError("the window cannot be covered: the browser has no display");
}

void BrowserPage::close() {
  pipe_->call("Target.closeTarget", {{"targetId", target_}});
  waitUntil([this] { return !exists(); }, serverTimeout, "the page to close");
}

bool BrowserPage::exists() {
  const nlohmann::json reply = pipe_->call("Target.getTargets");
  for (const nlohmann::json& target : reply.at("targetInfos")) {
    if (target.at("targetId") == target_) return true;
  }
  return false;
}

}  // namespace hushbox::rehearsal
