#include <pulse/pulseaudio.h>
#include <unistd.h>

#include "tests/platform/linux/fixtures/PulseAudioFixture.h"

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class PulseAudioStreamsTest : public PulseAudioFixture {};

TEST_P(PulseAudioStreamsTest, IsRunningWhileAStreamRecords) {
  const AudioObjectID device = start();
  recordRunning(device);
  EXPECT_EQ(isRunning(device), false);
  auto stream = server_->record();
  eventually([&] { return isRunning(device) == true; });
  stream.reset();
  eventually([&] { return isRunning(device) == false; });
  EXPECT_THAT(running_, ElementsAre(true, false));
}

TEST_P(PulseAudioStreamsTest, OtherDevicesAreNotRunning) {
  start();
  const auto stream = server_->record();
  eventually([&] { return isRunning(find("Jabra Speak2 75")) == true; });
  EXPECT_EQ(isRunning(find("Built-in Microphone")), false);
}

TEST_P(PulseAudioStreamsTest, DeviceAlreadyInACallIsRunningFromTheStart) {
  const auto stream = server_->record();
  EXPECT_EQ(isRunning(start()), true);
}

TEST_P(PulseAudioStreamsTest, SecondStreamChangesNothing) {
  const AudioObjectID device = start();
  recordRunning(device);
  auto first = server_->record();
  auto second = server_->record();
  eventually([&] { return isRunning(device) == true; });
  settle();
  first.reset();
  settle();
  EXPECT_EQ(isRunning(device), true);
  second.reset();
  eventually([&] { return isRunning(device) == false; });
  EXPECT_THAT(running_, ElementsAre(true, false));
}

TEST_P(PulseAudioStreamsTest, LevelMeterDoesNotCountAsRunning) {
  const AudioObjectID device = start();
  recordRunning(device);
  const auto meter = server_->meter();
  eventually([&] { return server_->isSpeakerphoneRunning(); });
  settle();
  EXPECT_EQ(isRunning(device), false);
  EXPECT_THAT(running_, IsEmpty());
}

TEST_P(PulseAudioStreamsTest, LevelMeterThatWasThereBeforeDoesNotCountAsRunning) {
  const auto meter = server_->meter();
  EXPECT_EQ(isRunning(start()), false);
}

TEST_P(PulseAudioStreamsTest, RecordingBesideALevelMeterCountsAsRunning) {
  const AudioObjectID device = start();
  const auto meter = server_->meter();
  const auto stream = server_->record();
  eventually([&] { return isRunning(device) == true; });
}

TEST_P(PulseAudioStreamsTest, PausedStreamDoesNotCountAsRunning) {
  const AudioObjectID device = start();
  recordRunning(device);
  const auto stream = server_->corkedRecord();
  settle();
  EXPECT_EQ(isRunning(device), false);
  EXPECT_THAT(running_, IsEmpty());
  stream->uncork();
  eventually([&] { return isRunning(device) == true; });
  stream->cork();
  eventually([&] { return isRunning(device) == false; });
  EXPECT_THAT(running_, ElementsAre(true, false));
}

/// Moves the server's first recording stream.
class StreamMover {
 public:
  explicit StreamMover(const rehearsal::Session& session)
      : client_(session.environment().at("PULSE_SERVER"), "Mixer") {}

  void moveTo(const char* source) {
    const rehearsal::AudioClient::Lock lock(client_);
    source_ = source;
    pa_operation_unref(pa_context_get_source_output_info_list(client_.context(), move, this));
  }

 private:
  static void move(pa_context* context, const pa_source_output_info* info, int last, void* self) {
    if (last != 0) return;
    pa_operation_unref(pa_context_move_source_output_by_name(
        context, info->index, static_cast<StreamMover*>(self)->source_, nullptr, nullptr));
  }

  const char* source_ = nullptr;
  rehearsal::AudioClient client_;
};

TEST_P(PulseAudioStreamsTest, MovedStreamCountsForItsNewSource) {
  const AudioObjectID device = start();
  const AudioObjectID other = find("Built-in Microphone");
  const auto stream = server_->record();
  eventually([&] { return isRunning(device) == true; });
  StreamMover mover(*session_);
  mover.moveTo(AudioServer::decoySource);
  eventually([&] { return isRunning(device) == false && isRunning(other) == true; });
  mover.moveTo(AudioServer::speakerphoneSource);
  eventually([&] { return isRunning(device) == true && isRunning(other) == false; });
}

TEST_P(PulseAudioStreamsTest, ListsTheProcessesThatRecordFromAFollowedDevice) {
  const AudioObjectID device = start();
  const auto processes = [this] { return hardware_->recordingProcesses(); };
  const auto recorder = [](const std::string& source) {
    return session_->start("parec.log", {"parec", "--device=" + source, "/dev/null"});
  };
  auto stream = server_->record();
  const auto other = recorder(AudioServer::speakerphoneSource);
  const auto elsewhere = recorder(AudioServer::decoySource);
  const auto meter = server_->meter();
  eventually([&] { return isRunning(find("Built-in Microphone")) == true; });
  // The program follows no device yet.
  EXPECT_THAT(processes(), IsEmpty());
  recordRunning(device);
  eventually([&] { return processes().size() == 2; });
  EXPECT_THAT(processes(), UnorderedElementsAre(getpid(), other->pid()));
  stream.reset();
  eventually([&] { return processes().size() == 1; });
  EXPECT_THAT(processes(), ElementsAre(other->pid()));
  other->stop();
  eventually([&] { return processes().empty(); });
}

TEST_P(PulseAudioStreamsTest, RunningListenerMayDestroyTheAdapter) {
  hardware_.reset();
  const AudioObjectID device = start();
  hardware_->addPropertyListener(device, audio::runningSomewhere, [this] { hardware_.reset(); });
  const auto stream = server_->record();
  eventually([&] { return hardware_ == nullptr; });
  settle();
}

HUSHBOX_ON_BOTH_AUDIO_SERVERS(PulseAudioStreamsTest);

}  // namespace
}  // namespace hushbox
