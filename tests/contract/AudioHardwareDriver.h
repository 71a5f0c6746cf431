#pragma once

#include <string>

#include "platform/AudioHardware.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives audio hardware and the devices around it. There may be other devices than those plugged
/// in here. Operations may take effect, and be announced, only while the loop runs.
class AudioHardwareDriver : public ContractDriver {
 public:
  static constexpr const char* speakerphone = "Jabra Speak2 75";

  virtual AudioHardware& hardware() = 0;
  virtual bool isMainThread() = 0;

  /// Plugs in a microphone with that name, at full input volume.
  virtual void plug(const std::string& name) = 0;
  virtual void unplug(const std::string& name) = 0;

  /// Sets the speakerphone's input volume, 0 to 1, as another program or the device itself would.
  virtual void writeVolume(float volume) = 0;

  /// Starts and stops a recording by another program from the speakerphone.
  virtual void startRecording() = 0;
  virtual void stopRecording() = 0;
};

}  // namespace hushbox
