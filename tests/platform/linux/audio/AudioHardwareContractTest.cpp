#include "tests/contract/AudioHardwareContract.h"

#include <algorithm>
#include <thread>

#include "platform/linux/audio/PulseAudioHardware.h"
#include "rehearsal/AudioServer.h"
#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"

namespace hushbox {
namespace {

class PulseAudioHardwareDriver final : public AudioHardwareDriver {
 public:
  explicit PulseAudioHardwareDriver(rehearsal::AudioFlavour flavour) : server_(session_, flavour) {
    session_.applyToThisProcess();
    hardware_ = std::make_unique<PulseAudioHardware>();
  }

  AudioHardware& hardware() override { return *hardware_; }
  bool isMainThread() override { return std::this_thread::get_id() == mainThread_; }
  void plug(const std::string& name) override { server_.plug(sourceOf(name), name); }
  void unplug(const std::string& name) override { server_.unplug(sourceOf(name)); }
  void writeVolume(float volume) override { server_.setVolume(volume); }
  void startRecording() override { recording_ = server_.record(); }
  void stopRecording() override { recording_.reset(); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return rehearsal::holdsWithin(condition,
                                  std::chrono::duration_cast<rehearsal::Milliseconds>(limit));
  }

 private:
  static std::string sourceOf(std::string name) {
    if (name == speakerphone) return rehearsal::AudioServer::speakerphoneSource;
    std::ranges::replace(name, ' ', '_');
    return "alsa_input.usb-" + name;
  }

  const std::thread::id mainThread_ = std::this_thread::get_id();
  rehearsal::Session session_;
  rehearsal::AudioServer server_;
  std::unique_ptr<PulseAudioHardware> hardware_;
  std::unique_ptr<rehearsal::RecordingStream> recording_;
};

auto onServer(rehearsal::AudioFlavour flavour) {
  return driverFactory<AudioHardwareDriver>(
      [flavour] { return std::make_unique<PulseAudioHardwareDriver>(flavour); });
}

INSTANTIATE_TEST_SUITE_P(PulseAudio, AudioHardwareContract,
                         onServer(rehearsal::AudioFlavour::PulseAudio));
INSTANTIATE_TEST_SUITE_P(PipeWire, AudioHardwareContract,
                         onServer(rehearsal::AudioFlavour::PipeWire));

}  // namespace
}  // namespace hushbox
