#pragma once

#include <pulse/pulseaudio.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "rehearsal/Waiting.h"

namespace hushbox::rehearsal {

/// The state of a source, as a client reads it.
struct SourceState {
  double volume = 0.0;
  bool muteSwitch = false;
  bool running = false;
  /// The server's number for the source, which the next server may give to another one.
  uint32_t index = PA_INVALID_INDEX;
};

/// A connection to a sound server, with its own thread.
///
/// All members are callable on any thread except the client's own. They block until the reply and
/// throw DeskError if the server refuses, has exited, or sends no reply within 10 s.
class AudioClient {
 public:
  /// Connects. Retries until the deadline, because the server may still be starting.
  AudioClient(const std::string& server, const std::string& name,
              Milliseconds deadline = serverTimeout);
  ~AudioClient();
  AudioClient(const AudioClient&) = delete;
  AudioClient& operator=(const AudioClient&) = delete;

  bool isConnected() const;

  /// Loads a module and returns its index.
  uint32_t loadModule(const std::string& module, const std::string& arguments);
  void unloadModule(uint32_t index);

  /// Returns nullopt if there is no source with that name.
  std::optional<SourceState> source(const std::string& name) const;
  void setVolume(const std::string& source, double volume);
  void setMuteSwitch(const std::string& source, bool muted);

  /// Calls `changed` on the client's thread with the state of the named source, whenever any source
  /// appears or changes. Call it at most once per client.
  void watchSource(const std::string& name, std::function<void(const SourceState&)> changed);

  /// Blocks the client's thread during direct calls to libpulse.
  class Lock {
   public:
    explicit Lock(const AudioClient& client) : loop_(client.loop_) {
      pa_threaded_mainloop_lock(loop_);
    }
    ~Lock() { pa_threaded_mainloop_unlock(loop_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

   private:
    pa_threaded_mainloop* loop_;
  };
  pa_context* context() const { return context_; }

 private:
  struct Watch;

  bool connect(const std::string& server, const std::string& name);
  void disconnect();

  pa_threaded_mainloop* loop_ = nullptr;
  pa_context* context_ = nullptr;
  std::unique_ptr<Watch> watch_;
};

}  // namespace hushbox::rehearsal
