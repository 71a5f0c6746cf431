#include "app/HushboxApp.h"

#include <string>

#include "platform/MainLoop.h"
#include "platform/Platform.h"

namespace hushbox {

int HushboxApp::main() {
  HushboxApp app;
  app.buildScene();
  return platform().mainLoop.run();
}

void HushboxApp::buildScene() {
  menu_.emplace(coordinator());
  const auto announced = lifetime_.weakly([this] { changeAnnounced(); });
  subscriptions_.push_back(coordinator().objectWillChange.subscribe(announced));
  subscriptions_.push_back(menu_->objectWillChange.subscribe(announced));
  redraw();
}

MuteCoordinator& HushboxApp::coordinator() {
  if (!coordinator_) coordinator_.emplace();
  return *coordinator_;
}

void HushboxApp::changeAnnounced() {
  if (redrawPending_) return;
  redrawPending_ = true;
  platform().mainLoop.mainAsync(lifetime_.weakly([this] { redraw(); }));
}

void HushboxApp::redraw() {
  redrawPending_ = false;
  updateActivity();
  const MuteCoordinator& now = coordinator();
  const Look look{now.isMuted(), now.jabra().deviceName().has_value(), now.jabra().isInCall()};
  if (look != shownLook_) {
    shownLook_ = look;
    platform().menuBar.setIcon(now.menuBarIcon(), "Hushbox: " + menu_->callLine());
  }
  std::vector<MenuRow> rows = menu_->rows();
  if (rows == shownRows_) return;
  shownRows_ = rows;
  platform().menuBar.setRows(std::move(rows));
}

void HushboxApp::updateActivity() {
  if (!coordinator().jabra().isInCall()) {
    activity_ = nullptr;
  } else if (!activity_) {
    activity_ = platform().mainLoop.beginActivity("The speakerphone is in use");
  }
}

}  // namespace hushbox
