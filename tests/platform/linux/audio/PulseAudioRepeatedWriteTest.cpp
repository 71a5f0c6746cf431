#include <array>
#include <cstdio>

#include "headset/JabraMonitor.h"
#include "platform/linux/LinuxPlatform.h"
#include "tests/platform/linux/fixtures/KeptLog.h"
#include "tests/platform/linux/fixtures/PulseAudioFixture.h"

namespace hushbox {
namespace {

using rehearsal::AudioClient;
using rehearsal::RecordingStream;
using testing::ElementsAre;
using testing::IsEmpty;

/// A microphone on which no stream has run since it was plugged in. PipeWire 1.4 keeps a write to
/// such a source to itself until a stream runs. Its volume is never restored.
class FreshMicrophone {
 public:
  static constexpr const char* source = "alsa_input.usb-fresh";
  static constexpr const char* name = "Jabra Fresh";

  /// `properties` are PipeWire's, appended to the node's.
  FreshMicrophone(const std::string& address, rehearsal::AudioFlavour flavour,
                  const std::string& properties = "")
      : client_(std::make_shared<AudioClient>(address, "Microphone")),
        module_(flavour == rehearsal::AudioFlavour::PulseAudio
                    ? client_->loadModule("module-null-source",
                                          std::string("channels=1 source_name=") + source +
                                              " description=\"" + name + "\"")
                    : client_->loadModule("module-null-sink",
                                          std::string("media.class=Audio/Source/Virtual channels=1 "
                                                      "sink_name=") +
                                              source + " sink_properties=\"device.description='" +
                                              name + "' state.restore-props=false " + properties +
                                              "\"")) {}
  ~FreshMicrophone() { client_->unloadModule(module_); }
  FreshMicrophone(const FreshMicrophone&) = delete;
  FreshMicrophone& operator=(const FreshMicrophone&) = delete;

  std::unique_ptr<RecordingStream> record() {
    return std::make_unique<RecordingStream>(client_, source, RecordingStream::Kind::Call);
  }
  double volume() const { return client_->source(source)->volume; }
  void setVolume(double volume) { client_->setVolume(source, volume); }

 private:
  std::shared_ptr<AudioClient> client_;
  std::uint32_t module_;
};

std::string outputOf(const std::string& command) {
  std::string text;
  std::FILE* const tool = popen(command.c_str(), "r");
  std::array<char, 4096> piece{};
  while (std::fgets(piece.data(), piece.size(), tool) != nullptr) text += piece.data();
  pclose(tool);
  return text;
}

class PulseAudioRepeatedWriteTest : public PulseAudioFixture {
 protected:
  static std::string address() { return session_->environment().at("PULSE_SERVER"); }

  /// Connects and returns the fresh microphone.
  AudioObjectID startOnFreshMicrophone() {
    start();
    eventually([&] { return find(FreshMicrophone::name) != 0; });
    return find(FreshMicrophone::name);
  }
};

TEST_P(PulseAudioRepeatedWriteTest, WriteBeforeTheFirstStreamArrivesOnce) {
  FreshMicrophone microphone(address(), GetParam());
  const AudioObjectID device = startOnFreshMicrophone();
  recordVolumes(device);
  EXPECT_EQ(write(device, 0.5F), audio::noError);
  settle();
  const auto stream = microphone.record();
  eventually([&] { return volumeOf(device) == 0.5F; });
  eventually([&] { return microphone.volume() == 0.5; });
  settle();
  EXPECT_THAT(volumes_, ElementsAre(0.5F));
}

TEST_P(PulseAudioRepeatedWriteTest, LastOfTwoWritesBeforeTheFirstStreamWins) {
  FreshMicrophone microphone(address(), GetParam());
  const AudioObjectID device = startOnFreshMicrophone();
  write(device, 0.0F);
  settle();
  write(device, 0.5F);
  settle();
  const auto stream = microphone.record();
  eventually([&] { return volumeOf(device) == 0.5F; });
  settle();
  eventually([&] { return microphone.volume() == 0.5; });
}

TEST_P(PulseAudioRepeatedWriteTest, ChangeByAnotherProgramIsNotOverwrittenWhenAStreamStarts) {
  const AudioObjectID device = start();
  write(device, 0.5F);
  eventually([&] { return volumeOf(device) == 0.5F; });
  server_->setVolume(0.25);
  eventually([&] { return volumeOf(device) == 0.25F; });
  recordVolumes(device);
  const auto stream = server_->record();
  eventually([&] { return isRunning(device) == true; });
  settle();
  EXPECT_EQ(server_->volume(), 0.25);
  EXPECT_THAT(volumes_, IsEmpty());
}

TEST_P(PulseAudioRepeatedWriteTest, MuteBeforeTheFirstStreamIsNoPressWhenItArrives) {
  FreshMicrophone microphone(address(), GetParam());
  server_->unplugSpeakerphone();
  KeptLog log;
  SessionBusConnection bus;
  const LinuxPlatform platform{bus, log};
  JabraMonitor monitor;
  std::vector<ButtonEvent> presses;
  monitor.onButton = [&](ButtonEvent event) { presses.push_back(event); };
  eventually([&] { return monitor.deviceName() == FreshMicrophone::name; });
  monitor.setMuted(true);
  // Longer than a change counts as the echo of our own write.
  rehearsal::letPass(rehearsal::Milliseconds{700});
  const auto stream = microphone.record();
  eventually([&] { return monitor.isInCall() && microphone.volume() == 0.0; });
  // Longer than a drop waits before it counts as a press.
  rehearsal::letPass(rehearsal::Milliseconds{500});
  EXPECT_EQ(monitor.isMuted(), true);
  EXPECT_THAT(presses, IsEmpty());
}

HUSHBOX_ON_BOTH_AUDIO_SERVERS(PulseAudioRepeatedWriteTest);

/// A microphone that ignores writes until the test unlocks it. Only PipeWire has such.
class PulseAudioIgnoredWriteTest : public PulseAudioRepeatedWriteTest {
 protected:
  void SetUp() override {
    PulseAudioRepeatedWriteTest::SetUp();
    microphone_.emplace(address(), GetParam(), "channelmix.lock-volumes=true");
    device_ = startOnFreshMicrophone();
    if (outputOf(tool + "enum-params " + FreshMicrophone::source + " Props 2>&1")
            .find("channelmix.lock-volumes") == std::string::npos) {
      GTEST_SKIP() << "This PipeWire cannot lock the volume of a source.";
    }
    recordVolumes(device_);
  }
  void TearDown() override {
    microphone_.reset();
    PulseAudioRepeatedWriteTest::TearDown();
  }

  void unlock() {
    outputOf(tool + "set-param " + FreshMicrophone::source +
             R"( Props '{ params = [ "channelmix.lock-volumes" false ] }' 2>&1)");
    settle();
  }

  const std::string tool = "pw-cli ";
  std::optional<FreshMicrophone> microphone_;
  AudioObjectID device_ = 0;
};

TEST_P(PulseAudioIgnoredWriteTest, IsRepeatedOnceWhenAStreamStarts) {
  write(device_, 0.5F);
  settle();
  unlock();
  auto stream = microphone_->record();
  eventually([&] { return volumeOf(device_) == 0.5F; });
  settle();
  EXPECT_THAT(volumes_, ElementsAre(0.5F));

  microphone_->setVolume(0.25);
  eventually([&] { return volumeOf(device_) == 0.25F; });
  stream.reset();
  eventually([&] { return isRunning(device_) == false; });
  stream = microphone_->record();
  eventually([&] { return isRunning(device_) == true; });
  settle();
  EXPECT_EQ(volumeOf(device_), 0.25F);
}

TEST_P(PulseAudioIgnoredWriteTest, IsNotRepeatedAfterAChangeByAnotherProgram) {
  microphone_->record();
  eventually([&] { return isRunning(device_) == false; });
  write(device_, 0.5F);
  settle();
  unlock();
  microphone_->setVolume(0.25);
  eventually([&] { return volumeOf(device_) == 0.25F; });
  const auto stream = microphone_->record();
  eventually([&] { return isRunning(device_) == true; });
  settle();
  EXPECT_EQ(microphone_->volume(), 0.25);
}

INSTANTIATE_TEST_SUITE_P(PipeWire, PulseAudioIgnoredWriteTest,
                         testing::Values(rehearsal::AudioFlavour::PipeWire),
                         [](const auto&) { return "PipeWire"; });

}  // namespace
}  // namespace hushbox
