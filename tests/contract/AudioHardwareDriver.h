#pragma once

#include <string>

#include "platform/AudioHardware.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives audio hardware and a desk of devices around it. Other devices than those plugged in may
/// be there too. What the desk does may take effect, and be announced, only while the loop runs.
class AudioHardwareDriver : public ContractDriver {
 public:
  static constexpr const char* speakerphone = "Jabra Speak2 75";

  virtual AudioHardware& hardware() = 0;
  virtual bool isMainThread() = 0;

  /// Plugs a microphone in under that name, `speakerphone` or another, at full input volume.
  virtual void plug(const std::string& name) = 0;
  virtual void unplug(const std::string& name) = 0;

  /// Another program, or the device itself, sets the speakerphone's input volume, 0 to 1.
  virtual void writeVolume(float volume) = 0;

  /// Another program starts and stops recording from the speakerphone.
  virtual void startRecording() = 0;
  virtual void stopRecording() = 0;
};

}  // namespace hushbox
