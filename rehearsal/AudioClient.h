#pragma once

#include <pulse/pulseaudio.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "rehearsal/Waiting.h"

namespace hushbox::rehearsal {

/// What a client reads of a source.
struct SourceState {
  double volume = 0.0;
  bool muteSwitch = false;
  bool running = false;
};

/// One connection to a sound server, with a thread of its own for it.
///
/// All members are callable on any thread but the client's own, block until the server has
/// answered, and throw DeskError when it refuses, is gone, or stays silent for 10 s.
class AudioClient {
 public:
  /// Connects, trying again until the deadline because the server may be still starting.
  AudioClient(const std::string& server, const std::string& name, Milliseconds deadline = patience);
  ~AudioClient();
  AudioClient(const AudioClient&) = delete;
  AudioClient& operator=(const AudioClient&) = delete;

  bool isConnected() const;

  /// Loads a module and returns its index.
  uint32_t loadModule(const std::string& module, const std::string& arguments);
  void unloadModule(uint32_t index);

  /// Empty when there is no source of that name.
  std::optional<SourceState> source(const std::string& name) const;
  void setVolume(const std::string& source, double volume);
  void setMuteSwitch(const std::string& source, bool muted);

  /// Calls back on the client's thread whenever a source changes, appears or goes; the callback
  /// gets the state of the named one. Once per client.
  void watchSource(const std::string& name, std::function<void(const SourceState&)> changed);

  /// Holds the client's thread still, for calls to libpulse.
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
