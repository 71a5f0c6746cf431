#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/PulseAudioHardware.h"
#include "rehearsal/AudioServer.h"
#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"

namespace hushbox {

/// The adapter on a real server of either flavour, which all tests of a suite share; the
/// speakerphone is plugged in anew for each test.
class PulseAudioTest : public testing::TestWithParam<rehearsal::AudioFlavour> {
 protected:
  using AudioServer = rehearsal::AudioServer;

  static void TearDownTestSuite() { leave(); }

  void SetUp() override {
    if (!server_) {
      session_ = std::make_unique<rehearsal::Session>();
      session_->applyToThisProcess();
      server_ = std::make_unique<AudioServer>(*session_, GetParam());
    }
    server_->plugSpeakerphone();
  }

  void TearDown() override {
    hardware_.reset();
    if (HasFatalFailure() || !server_->isRunning()) return leave();
    if (server_->hasSpeakerphone()) server_->unplugSpeakerphone();
  }

  static void leave() {
    server_.reset();
    session_.reset();
  }

  /// Connects and returns the speakerphone, which must be known at once.
  AudioObjectID start() {
    hardware_ = std::make_unique<PulseAudioHardware>();
    const AudioObjectID speakerphone = find(AudioServer::speakerphoneName);
    EXPECT_NE(speakerphone, 0U);
    return speakerphone;
  }

  std::vector<AudioObjectID> devices() {
    std::uint32_t size = 0;
    EXPECT_EQ(hardware_->getPropertyDataSize(audio::systemObject, audio::deviceList, size), 0);
    std::vector<AudioObjectID> list(size / sizeof(AudioObjectID));
    EXPECT_EQ(hardware_->getPropertyData(audio::systemObject, audio::deviceList, size, list.data()),
              0);
    return list;
  }

  std::string nameOf(AudioObjectID device) {
    std::string name;
    const AudioStatus status = hardware_->getPropertyText(device, audio::deviceName, name);
    return status == audio::noError ? name : "";
  }

  std::vector<std::string> names() {
    std::vector<std::string> result;
    for (const AudioObjectID device : devices()) result.push_back(nameOf(device));
    return result;
  }

  /// The first device of that name, 0 when there is none.
  AudioObjectID find(const std::string& name) {
    const auto list = devices();
    const auto found =
        std::ranges::find_if(list, [&](AudioObjectID device) { return nameOf(device) == name; });
    return found == list.end() ? 0 : *found;
  }

  std::optional<float> volumeOf(AudioObjectID device) {
    float volume = -1.0F;
    std::uint32_t size = sizeof volume;
    const auto status = hardware_->getPropertyData(device, audio::inputVolume, size, &volume);
    return status == audio::noError ? std::optional(volume) : std::nullopt;
  }

  std::optional<bool> isRunning(AudioObjectID device) {
    std::uint32_t running = 0;
    std::uint32_t size = sizeof running;
    const auto status = hardware_->getPropertyData(device, audio::runningSomewhere, size, &running);
    return status == audio::noError ? std::optional(running != 0) : std::nullopt;
  }

  AudioStatus write(AudioObjectID device, float volume) {
    return hardware_->setPropertyData(device, audio::inputVolume, sizeof volume, &volume);
  }

  /// Keeps what the volume was read as at each call of a listener.
  void recordVolumes(AudioObjectID device) {
    hardware_->addPropertyListener(device, audio::inputVolume,
                                   [this, device] { volumes_.push_back(*volumeOf(device)); });
  }
  /// The same for the in-use flag.
  void recordRunning(AudioObjectID device) {
    hardware_->addPropertyListener(device, audio::runningSomewhere,
                                   [this, device] { running_.push_back(*isRunning(device)); });
  }
  /// The same for the names in the device list.
  void recordLists() {
    hardware_->addPropertyListener(audio::systemObject, audio::deviceList,
                                   [this] { lists_.push_back(names()); });
  }

  static void eventually(const std::function<bool()>& predicate) {
    EXPECT_TRUE(rehearsal::holdsWithin(predicate, rehearsal::patience));
  }
  /// Long enough for whatever the server has been told to come back to us.
  static void settle() { rehearsal::letPass(rehearsal::Milliseconds{200}); }

  static inline std::unique_ptr<rehearsal::Session> session_;
  static inline std::unique_ptr<AudioServer> server_;
  std::unique_ptr<PulseAudioHardware> hardware_;
  std::vector<float> volumes_;
  std::vector<bool> running_;
  std::vector<std::vector<std::string>> lists_;
};

/// Runs a suite derived from PulseAudioTest on both flavours.
#define HUSHBOX_ON_BOTH_AUDIO_SERVERS(suite)                                                    \
  INSTANTIATE_TEST_SUITE_P(PulseAudio, suite,                                                   \
                           testing::Values(rehearsal::AudioFlavour::PulseAudio),                \
                           [](const auto&) { return "PulseAudio"; });                           \
  INSTANTIATE_TEST_SUITE_P(PipeWire, suite, testing::Values(rehearsal::AudioFlavour::PipeWire), \
                           [](const auto&) { return "PipeWire"; })

}  // namespace hushbox
