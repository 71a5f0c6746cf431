#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <thread>

#include "rehearsal/Waiting.h"

namespace hushbox::rehearsal {

/// The remote-control connection of a browser: JSON messages, each ended by a zero byte, over a
/// pair of connected sockets, so that no network port is opened.
class DevToolsPipe {
 public:
  DevToolsPipe();
  ~DevToolsPipe();
  DevToolsPipe(const DevToolsPipe&) = delete;
  DevToolsPipe& operator=(const DevToolsPipe&) = delete;

  /// The end to hand to the browser as its descriptors 3 and 4.
  int browserEnd() const { return browserEnd_; }
  /// Lets go of the browser's end once it has been handed over, so that its death is noticed.
  void closeBrowserEnd();

  /// Sends a command and waits for its result, iterating the main context. The session names the
  /// page, or is empty for the browser as a whole. Throws DeskError with the browser's own error
  /// text, or when the browser is gone or stays silent until the deadline.
  nlohmann::json call(const std::string& method,
                      nlohmann::json parameters = nlohmann::json::object(),
                      const std::string& session = {}, Milliseconds deadline = patience);

  /// Called on the reading thread with an event's parameters and the session of the page.
  using EventHandler =
      std::function<void(const nlohmann::json& parameters, const std::string& session)>;

  /// Sets what handles the events of that name. Call it before such an event can arrive.
  void onEvent(const std::string& name, EventHandler handler);

  /// Sends a command and ignores its result. Any thread.
  void post(const std::string& method, nlohmann::json parameters, const std::string& session);

 private:
  int send(const std::string& method, nlohmann::json parameters, const std::string& session,
           bool ignoresResult = false);
  bool isAnswered(int id);
  nlohmann::json takeAnswer(int id, const std::string& method);
  void readMessages();
  void take(const std::string& message);
  void handle(const nlohmann::json& event);

  int ourEnd_ = -1;
  int browserEnd_ = -1;
  /// Keeps the messages of several threads apart.
  std::mutex sending_;
  int lastId_ = 0;
  std::mutex mutex_;
  std::map<std::string, EventHandler> handlers_;
  std::map<int, nlohmann::json> answers_;
  std::set<int> ignored_;
  bool closed_ = false;
  std::thread reader_;
};

}  // namespace hushbox::rehearsal
