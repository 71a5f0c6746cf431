#include "rehearsal/Browser.h"

#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <iterator>

#include "rehearsal/DeskError.h"
#include "rehearsal/DevToolsPipe.h"
#include "rehearsal/Programs.h"

namespace hushbox::rehearsal {

namespace {

/// The binary itself comes first: its start script takes 0.1 s longer.
const std::vector<std::string>& programNames() {
  static const std::vector<std::string> names{"/usr/lib/chromium/chromium", "chromium"};
  return names;
}

bool contains(const std::vector<std::string>& all, const std::string& one) {
  return std::find(all.begin(), all.end(), one) != all.end();
}

std::string base64(const std::string& bytes) {
  gchar* const encoded =
      g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size());
  std::string result(encoded);
  g_free(encoded);
  return result;
}

/// The content of the rehearsal's page at a Teams address; empty if there is no such page.
std::string pageAt(const std::string& url) {
  const std::string prefix = Browser::teamsUrl({});
  if (!url.starts_with(prefix)) return {};
  const std::string file = url.substr(prefix.size(), url.find_first_of("?#") - prefix.size());
  std::ifstream page(std::string(HUSHBOX_REHEARSAL_PAGES) + "/" + file, std::ios::binary);
  return {std::istreambuf_iterator<char>(page), {}};
}

}  // namespace

Browser::Browser(const Session& session, const Options& options)
    : session_(session), options_(options), pipe_(std::make_shared<DevToolsPipe>()) {
  if (!options_.headless && !session.hasDisplay()) {
    throw DeskError("a browser with windows needs a display");
  }
  std::vector<std::string> command = commandLine();
  // The debugging pipe keeps the browser running while it has no window.
  command.insert(command.end(), {"--remote-debugging-pipe", "--no-startup-window"});
  process_ = session.start(options_.profile + ".log", std::move(command),
                           {{pipe_->browserEnd(), 3}, {pipe_->browserEnd(), 4}});
  pipe_->closeBrowserEnd();
  serveTeams();
}

Browser::~Browser() {
  process_->kill();
}

void Browser::restartAudioService() const {
  const std::string profile = (session_.folder() / options_.profile).string();
  for (const pid_t process : session_.processes()) {
    std::ifstream file("/proc/" + std::to_string(process) + "/cmdline");
    std::string arguments{std::istreambuf_iterator<char>(file), {}};
    // Browsers separate their children's arguments with blanks.
    std::ranges::replace(arguments, '\0', ' ');
    const auto contain = [&](const std::string& text) {
      return arguments.find(text) != std::string::npos;
    };
    // Another browser's profile may begin with the name of this one.
    if (contain("audio.mojom.AudioService") && contain(profile + ' ')) ::kill(process, SIGKILL);
  }
}

void Browser::serveTeams() {
  // The handler must not own the pipe, which owns the handler.
  pipe_->onEvent("Fetch.requestPaused", [&pipe = *pipe_](const nlohmann::json& request,
                                                         const std::string& session) {
    const std::string page = pageAt(request.at("request").at("url"));
    pipe.post("Fetch.fulfillRequest",
              {{"requestId", request.at("requestId")},
               {"responseCode", page.empty() ? 404 : 200},
               {"responseHeaders", {{{"name", "Content-Type"}, {"value", "text/html"}}}},
               {"body", base64(page)}},
              session);
  });
}

std::vector<std::string> Browser::commandLine() const {
  std::vector<std::string> command{
      findProgram(programNames()),
      "--user-data-dir=" + (session_.folder() / options_.profile).string(), "--window-size=900,640",
      "--disable-gpu", "--disable-quic", "--disable-sync", "--disable-breakpad",
      "--disable-background-networking", "--disable-component-update", "--disable-default-apps",
      "--disable-dev-shm-usage", "--disable-features=Translate,OptimizationHints,MediaRouter",
      "--no-first-run", "--no-default-browser-check", "--no-service-autorun",
      "--password-store=basic", "--use-mock-keychain",
      // Pages may record without asking.
      "--use-fake-ui-for-media-stream"};
  // Chromium refuses to run as root, as in a container, with its sandbox.
  if (geteuid() == 0) command.push_back("--no-sandbox");
  command.push_back(options_.headless ? "--headless=new" : "--ozone-platform=x11");
  command.insert(command.end(), options_.arguments.begin(), options_.arguments.end());
  return command;
}

std::unique_ptr<BrowserPage> Browser::open(const std::string& url, WindowKind kind) {
  const bool isTeams = url.starts_with(std::string(teamsOrigin) + "/");
  // Open an empty page first: requests can be answered only after the pipe is attached to a page.
  const std::string first = !isTeams                  ? url
                            : kind == WindowKind::App ? pageUrl("blank.html")
                                                      : "about:blank";
  auto page = std::make_unique<BrowserPage>(
      pipe_, kind == WindowKind::App ? openAppWindow(first) : openTarget(first, kind));
  if (isTeams) page->navigateToTeams(url);
  waitUntil(
      [&] {
        return page
            ->evaluate("document.readyState === 'complete' && location.href !== 'about:blank'")
            .get<bool>();
      },
      serverTimeout, "the page " + url);
  return page;
}

std::string Browser::openTarget(const std::string& url, WindowKind kind) {
  const nlohmann::json opened =
      pipe_->call("Target.createTarget", {{"url", url}, {"newWindow", kind == WindowKind::Window}});
  return opened.at("targetId");
}

std::string Browser::openAppWindow(const std::string& url) {
  if (options_.headless) throw DeskError("an app window needs a display");
  const std::vector<std::string> before = pageTargets();
  std::vector<std::string> command = commandLine();
  command.push_back("--app=" + url);
  // A second start with the same profile opens its window in the first browser and exits.
  const auto launcher = session_.start("chromium-app.log", std::move(command));
  std::string opened;
  const auto appeared = [&] {
    for (const std::string& target : pageTargets()) {
      if (!contains(before, target)) opened = target;
    }
    return !opened.empty();
  };
  waitUntil(appeared, serverTimeout, "an app window for " + url);
  holdsWithin([&] { return !launcher->isRunning(); }, serverTimeout);
  return opened;
}

std::vector<std::string> Browser::pageTargets() {
  std::vector<std::string> result;
  const nlohmann::json reply = pipe_->call("Target.getTargets");
  for (const nlohmann::json& target : reply.at("targetInfos")) {
    if (target.at("type") == "page") result.push_back(target.at("targetId"));
  }
  return result;
}

std::string Browser::teamsUrl(const std::string& file) {
  return std::string(teamsOrigin) + "/v2/" + file;
}

std::string Browser::pageUrl(const std::string& file) {
  return std::string("file://") + HUSHBOX_REHEARSAL_PAGES + "/" + file;
}

}  // namespace hushbox::rehearsal
