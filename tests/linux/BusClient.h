#pragma once

#include <gio/gio.h>

#include <string>
#include <vector>

#include "rehearsal/BusConnection.h"

namespace hushbox {

/// Somebody else on the bus, as a panel is: asks with a connection of its own and keeps what is
/// sent to everybody. On the main thread; the main context goes on while an answer is awaited.
class BusClient {
 public:
  /// What came of a call: the tuple of results, or the error's name.
  struct Answer {
    rehearsal::Variant value;
    std::string error;
    /// The results in GVariant's text form, without the types.
    std::string text() const;
  };

  explicit BusClient(const std::string& busAddress);
  ~BusClient();
  BusClient(const BusClient&) = delete;
  BusClient& operator=(const BusClient&) = delete;

  /// `arguments` may be floating or null.
  Answer call(const std::string& name, const std::string& path, const std::string& interface,
              const std::string& method, GVariant* arguments = nullptr);
  /// `org.freedesktop.DBus.Properties.Get`, unwrapped.
  Answer property(const std::string& name, const std::string& path, const std::string& interface,
                  const std::string& property);

  /// Keeps all signals of that sender from now on.
  void listenTo(const std::string& sender);
  /// Those that came, each as "Member" or "Member (arguments)"; forgets them. The bus delivers in
  /// order, so that everything that was sent before this call is in.
  std::vector<std::string> takeSignals();

  GDBusConnection* connection() const { return bus_.get(); }

 private:
  rehearsal::BusConnection bus_;
  std::string sender_;
  guint subscription_ = 0;
  std::vector<std::string> signals_;
};

}  // namespace hushbox
