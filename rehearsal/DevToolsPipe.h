#pragma once

#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
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

 private:
  bool isAnswered(int id);
  nlohmann::json takeAnswer(int id, const std::string& method);
  void readMessages();
  void take(const std::string& message);

  int ourEnd_ = -1;
  int browserEnd_ = -1;
  int lastId_ = 0;
  std::mutex mutex_;
  std::map<int, nlohmann::json> answers_;
  bool closed_ = false;
  std::thread reader_;
};

}  // namespace hushbox::rehearsal
