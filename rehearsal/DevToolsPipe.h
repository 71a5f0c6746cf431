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

/// The remote debugging connection of a browser: JSON messages, each terminated by a zero byte,
/// over a pair of connected sockets. It opens no network port.
class DevToolsPipe {
 public:
  DevToolsPipe();
  ~DevToolsPipe();
  DevToolsPipe(const DevToolsPipe&) = delete;
  DevToolsPipe& operator=(const DevToolsPipe&) = delete;

  /// The socket to pass to the browser as its descriptors 3 and 4.
  int browserEnd() const { return browserEnd_; }
  /// Closes our copy of the browser's socket after the browser has been started, so that the
  /// connection closes when the browser exits.
  void closeBrowserEnd();

  /// Sends a command, waits for its result and returns it; runs the main context meanwhile.
  /// `session` identifies the page; it is empty for the browser as a whole. Throws DeskError with
  /// the browser's error text for an error reply, if the browser exits, and at the deadline.
  nlohmann::json call(const std::string& method,
                      nlohmann::json parameters = nlohmann::json::object(),
                      const std::string& session = {}, Milliseconds deadline = serverTimeout);

  /// Receives an event's parameters and the id of the page's session. Runs on the reader thread.
  using EventHandler =
      std::function<void(const nlohmann::json& parameters, const std::string& session)>;

  /// Sets the handler for the events of that name. Call it before such an event can arrive.
  void onEvent(const std::string& name, EventHandler handler);

  /// Sends a command and ignores its result. Callable on any thread.
  void post(const std::string& method, nlohmann::json parameters, const std::string& session);

 private:
  /// Returns the command's id, or 0 if the browser has exited.
  int send(const std::string& method, nlohmann::json parameters, const std::string& session,
           bool ignoreReply = false);
  bool hasReply(int id);
  nlohmann::json takeReply(int id, const std::string& method);
  void readMessages();
  void onMessage(const std::string& message);
  void dispatch(const nlohmann::json& event);

  int ourEnd_ = -1;
  int browserEnd_ = -1;
  /// Keeps messages that several threads send from interleaving.
  std::mutex sendMutex_;
  int lastId_ = 0;
  std::mutex mutex_;
  std::map<std::string, EventHandler> handlers_;
  std::map<int, nlohmann::json> replies_;
  std::set<int> ignoredReplies_;
  bool closed_ = false;
  std::thread reader_;
};

}  // namespace hushbox::rehearsal
