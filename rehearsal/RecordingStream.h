#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "rehearsal/AudioClient.h"

namespace hushbox::rehearsal {

/// A stream that records from a source from construction to destruction.
class RecordingStream {
 public:
  enum class Kind {
    Call,    ///< Records, as a meeting does.
    Corked,  ///< Connected but paused.
    Meter,   ///< A peak meter as mixers show it ("Peak detect").
  };

  /// Connects and waits until the server has accepted the stream and, unless corked, sound
  /// arrives. Connects again if none does: a busy session manager may leave a stream without a
  /// source. Throws DeskError on failure.
  RecordingStream(std::shared_ptr<AudioClient> client, const std::string& source, Kind kind);
  ~RecordingStream();
  RecordingStream(const RecordingStream&) = delete;
  RecordingStream& operator=(const RecordingStream&) = delete;

  void cork();
  void uncork();

  /// The bytes of sound received so far.
  std::uint64_t bytes() const { return bytes_; }

 private:
  void connect(const std::string& source, Kind kind);
  void release();
  void setCorked(bool corked);

  std::shared_ptr<AudioClient> client_;
  pa_stream* stream_ = nullptr;
  std::atomic<std::uint64_t> bytes_{0};
};

}  // namespace hushbox::rehearsal
