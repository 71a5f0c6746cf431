#include "tests/contract/AudioHardwareContract.h"

#include <map>

#include "platform/macos/CoreAudioHardware.h"
#include "platform/macos/RunLoopMainLoop.h"
#include "tests/platform/macos/MacScope.h"

namespace hushbox {
namespace {

class CoreAudioHardwareDriver final : public AudioHardwareDriver {
 public:
  AudioHardware& hardware() override { return hardware_; }
  bool isMainThread() override { return RunLoopMainLoop().isMainThread(); }
  void plug(const std::string& name) override { devices_[name] = doubles::plug({.name = name}); }
  void unplug(const std::string& name) override { doubles::unplug(devices_[name]); }
  void writeVolume(float volume) override {
    doubles::setInputVolume(devices_[speakerphone], volume);
  }
  void startRecording() override { doubles::setRunning(devices_[speakerphone], true); }
  void stopRecording() override { doubles::setRunning(devices_[speakerphone], false); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return doubles::runUntil(condition, limit);
  }

 private:
  MacScope scope_;
  CoreAudioHardware hardware_;
  std::map<std::string, AudioObjectID> devices_;
};

INSTANTIATE_TEST_SUITE_P(Mac, AudioHardwareContract, driverFactory<AudioHardwareDriver>([] {
                           return std::make_unique<CoreAudioHardwareDriver>();
                         }));

}  // namespace
}  // namespace hushbox
