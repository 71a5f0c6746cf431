#pragma once

#include <gio/gio.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/GLibPointers.h"
#include "rehearsal/BusConnection.h"

namespace hushbox {

/// A program on the accessibility bus, made of data, inside the test's own process. It answers on
/// GDBus's thread, so the test may be blocked in a call to it.
///
/// Its application object is "/org/a11y/atspi/accessible/root"; the others have the paths that they
/// are put under. It is on the bus from its beginning to its end. Any thread.
class AccessibleProgram {
 public:
  static constexpr const char* root = "/org/a11y/atspi/accessible/root";

  struct Object {
    std::uint32_t role = 0;
    std::string name{};
    std::string description{};
    std::map<std::string, std::string> attributes{};
    std::map<std::string, std::string> documentAttributes{};
    std::string parent{};
    std::uint32_t states = 0;  ///< A bit for each of the first 32.
    std::vector<std::string> children{};
    std::vector<std::string> actions{};
    /// What DoAction answers.
    bool takesActions = true;
  };

  /// Asked before the data: a tuple to answer with instead, or null.
  using Answer = std::function<GVariant*(const std::string& path, const std::string& method)>;

  AccessibleProgram(const std::string& busAddress, const std::string& name,
                    const std::string& toolkit);
  ~AccessibleProgram();

  void put(const std::string& path, Object object);
  void remove(const std::string& path);
  void answerWith(Answer answer);

  /// Whether it offers Collection, and puts attributes among an object's properties, as programs on
  /// ATK do and others do not.
  void setCollection(bool offered) { collection_ = offered; }
  void setAttributesInProperties(bool there) { attributesInProperties_ = there; }

  /// Also answers those who connect to this socket, and says so to whoever asks for its address.
  void offer(const std::string& socketPath);
  /// Ends the connections to that socket, and takes no more.
  void hangUp();

  /// Leaves calls lying until `thaw()`, as a stopped process does.
  void freeze();
  void thaw();

  std::string busName() const;
  /// Over the bus, and straight.
  int calls() const { return calls_; }
  int straightCalls() const { return straightCalls_; }
  /// The actions that were performed: "path index".
  std::vector<std::string> performed() const;

 private:
  static GDBusMessage* filter(GDBusConnection* connection, GDBusMessage* message, gboolean incoming,
                              gpointer self);
  void acceptAll();
  void answer(GDBusConnection* connection, GDBusMessage* call);
  GVariant* resultOf(GDBusMessage* call);
  GVariant* properties(const Object& object) const;
  GVariant* reference(const std::string& path) const;
  GVariant* references(const std::vector<std::string>& paths) const;
  void collect(const std::string& path, GVariant* roles, std::vector<std::string>& found) const;

  const std::string name_;
  const std::string toolkit_;
  mutable std::mutex mutex_;
  std::map<std::string, Object> objects_;
  Answer answer_;
  bool frozen_ = false;
  std::vector<std::pair<GDBusConnection*, GDBusMessage*>> waiting_;
  std::vector<std::string> performed_;
  std::atomic<bool> collection_{true};
  std::atomic<bool> attributesInProperties_{true};
  std::atomic<int> calls_{0};
  std::atomic<int> straightCalls_{0};
  std::string offered_;
  ObjectPointer<GSocketListener> listener_;
  CancellablePointer stopped_;
  /// Touched by the acceptor while it runs, else by whoever has ended it.
  std::vector<ObjectPointer<GDBusConnection>> straight_;
  std::thread acceptor_;
  rehearsal::BusConnection bus_;
  unsigned filter_ = 0;
};

}  // namespace hushbox
