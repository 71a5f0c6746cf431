#include <map>

#include "platform/simulated/SimulatedAudioHardware.h"
#include "tests/contract/AudioHardwareContract.h"

namespace hushbox {
namespace {

class SimulatedAudioHardwareDriver final : public AudioHardwareDriver {
 public:
  AudioHardware& hardware() override { return hardware_; }
  bool isMainThread() override { return loop_.isMainThread(); }
  void plug(const std::string& name) override {
    devices_[name] = hardware_.plug({.name = name, .inputVolume = 1.0F});
  }
  void unplug(const std::string& name) override { hardware_.unplug(devices_[name]); }
  void writeVolume(float volume) override {
    hardware_.setInputVolume(devices_[speakerphone], volume);
  }
  void startRecording() override { hardware_.setRunning(devices_[speakerphone], true); }
  void stopRecording() override { hardware_.setRunning(devices_[speakerphone], false); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return loop_.advanceUntil(condition, limit);
  }

 private:
  Journal journal_;
  SimulatedMainLoop loop_{journal_};
  SimulatedAudioHardware hardware_{journal_, loop_};
  std::map<std::string, AudioObjectID> devices_;
};

INSTANTIATE_TEST_SUITE_P(Simulated, AudioHardwareContract, driverFactory<AudioHardwareDriver>([] {
                           return std::make_unique<SimulatedAudioHardwareDriver>();
                         }));

}  // namespace
}  // namespace hushbox
