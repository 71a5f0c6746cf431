#include "rehearsal/DevToolsPipe.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

DevToolsPipe::DevToolsPipe() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw DeskError("cannot create a pair of sockets");
  }
  ourEnd_ = ends[0];
  browserEnd_ = ends[1];
  reader_ = std::thread([this] { readMessages(); });
}

DevToolsPipe::~DevToolsPipe() {
  closeBrowserEnd();
  shutdown(ourEnd_, SHUT_RDWR);
  reader_.join();
  ::close(ourEnd_);
}

void DevToolsPipe::closeBrowserEnd() {
  if (browserEnd_ >= 0) ::close(browserEnd_);
  browserEnd_ = -1;
}

nlohmann::json DevToolsPipe::call(const std::string& method, nlohmann::json parameters,
                                  const std::string& session, Milliseconds deadline) {
  const int id = send(method, std::move(parameters), session);
  if (id == 0) throw DeskError("the browser has exited");
  waitUntil([&] { return hasReply(id); }, deadline, "the browser's reply to " + method);
  return takeReply(id, method);
}

void DevToolsPipe::onEvent(const std::string& name, EventHandler handler) {
  const std::scoped_lock lock(mutex_);
  handlers_[name] = std::move(handler);
}

void DevToolsPipe::post(const std::string& method, nlohmann::json parameters,
                        const std::string& session) {
  send(method, std::move(parameters), session, true);
}

int DevToolsPipe::send(const std::string& method, nlohmann::json parameters,
                       const std::string& session, bool ignoreReply) {
  const std::scoped_lock lock(sendMutex_);
  const int id = ++lastId_;
  if (ignoreReply) {
    const std::scoped_lock repliesLock(mutex_);
    ignoredReplies_.insert(id);
  }
  nlohmann::json command{{"id", id}, {"method", method}, {"params", std::move(parameters)}};
  if (!session.empty()) command["sessionId"] = session;
  // The string's terminating zero byte is also the protocol's message terminator.
  const std::string text = command.dump();
  const ssize_t sent = ::send(ourEnd_, text.c_str(), text.size() + 1, MSG_NOSIGNAL);
  return sent == static_cast<ssize_t>(text.size() + 1) ? id : 0;
}

bool DevToolsPipe::hasReply(int id) {
  const std::scoped_lock lock(mutex_);
  return closed_ || replies_.contains(id);
}

nlohmann::json DevToolsPipe::takeReply(int id, const std::string& method) {
  const std::scoped_lock lock(mutex_);
  auto reply = replies_.extract(id);
  if (reply.empty()) throw DeskError("the browser exited during " + method);
  if (reply.mapped().contains("error")) {
    throw DeskError(method + " failed: " + reply.mapped()["error"].dump());
  }
  return reply.mapped().value("result", nlohmann::json::object());
}

void DevToolsPipe::readMessages() {
  std::string message;
  std::array<char, 65536> piece{};
  for (;;) {
    const ssize_t count = recv(ourEnd_, piece.data(), piece.size(), 0);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    for (ssize_t i = 0; i < count; ++i) {
      if (piece[static_cast<std::size_t>(i)] != '\0') {
        message += piece[static_cast<std::size_t>(i)];
      } else {
        onMessage(message);
        message.clear();
      }
    }
  }
  const std::scoped_lock lock(mutex_);
  closed_ = true;
  wakeWaiters();
}

void DevToolsPipe::onMessage(const std::string& message) {
  nlohmann::json parsed = nlohmann::json::parse(message, nullptr, false);
  if (!parsed.is_object()) return;
  if (!parsed.contains("id")) return dispatch(parsed);
  const std::scoped_lock lock(mutex_);
  const int id = parsed["id"];
  if (ignoredReplies_.erase(id) != 0) return;
  replies_[id] = std::move(parsed);
  wakeWaiters();
}

void DevToolsPipe::dispatch(const nlohmann::json& event) {
  EventHandler handler;
  {
    const std::scoped_lock lock(mutex_);
    const auto found = handlers_.find(event.value("method", ""));
    if (found == handlers_.end()) return;
    handler = found->second;
  }
  handler(event.at("params"), event.value("sessionId", ""));
}

}  // namespace hushbox::rehearsal
