#include <pulse/glib-mainloop.h>
#include <pulse/pulseaudio.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <variant>

#include "tests/platform/linux/fixtures/PulseAudioFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::AudioClient;
using rehearsal::AudioFlavour;
using rehearsal::holdsWithin;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

using Clock = std::chrono::steady_clock;

// Longer than any call takes that does not wait for the server, even on a loaded machine. libpulse
// itself would wait for 30 s.
constexpr auto maxCallTime = 3s;

class PulseAudioServerTest : public PulseAudioFixture {
 protected:
  static constexpr const char* microphoneName = "Built-in Microphone";

  /// How long a step blocks the main loop.
  template <typename Step>
  static Clock::duration timeOf(Step step) {
    const auto before = Clock::now();
    step();
    return Clock::now() - before;
  }

  /// Makes the server load the microphone after the speakerphone when it is restarted.
  static void loadMicrophoneLast() {
    server_->unplug(AudioServer::decoySource);
    server_->plug(AudioServer::decoySource, microphoneName);
  }

  static AudioClient mixer() { return {session_->environment().at("PULSE_SERVER"), "Mixer"}; }

  /// How many times the loop wakes up within a second.
  static int wakeUpsInASecond() {
    bool over = false;
    g_timeout_add(
        1000,
        [](gpointer flag) -> gboolean {
          *static_cast<bool*>(flag) = true;
          return G_SOURCE_REMOVE;
        },
        &over);
    int wakeUps = 0;
    while (!over) {
      g_main_context_iteration(nullptr, TRUE);
      ++wakeUps;
    }
    return wakeUps - 1;
  }
};

TEST_P(PulseAudioServerTest, DevicesDisappearWithTheServerAndReturnWithNewIdentifiers) {
  const AudioObjectID first = start();
  recordLists();
  recordVolumes(first);
  server_->kill();
  eventually([&] { return devices().empty(); });
  EXPECT_THAT(lists_, Contains(IsEmpty()));
  EXPECT_EQ(volumeOf(first), std::nullopt);
  EXPECT_EQ(write(first, 0.5F), audio::hardwareNotRunning);
  EXPECT_TRUE(hardware_->hasProperty(audio::systemObject, audio::deviceList));

  lists_.clear();
  server_->restart();
  eventually([&] { return find("Jabra Speak2 75") != 0; });
  const AudioObjectID second = find("Jabra Speak2 75");
  EXPECT_NE(second, first);
  EXPECT_EQ(volumeOf(first), std::nullopt);
  ASSERT_FALSE(lists_.empty());
  EXPECT_THAT(lists_.back(), Contains("Jabra Speak2 75"));
  EXPECT_THAT(volumes_, IsEmpty());

  EXPECT_EQ(write(second, 0.5F), audio::noError);
  eventually([&] { return volumeOf(second) == 0.5F; });
}

// PulseAudio's indices count from 0 again, in the order in which the sources are loaded. PipeWire's
// do as well, but other objects are numbered in between.
TEST_P(PulseAudioServerTest, AnotherSourceWithTheSpeakerphonesFormerIndexIsAnotherDevice) {
  server_->restart();
  const AudioObjectID former = start();
  const auto formerDevices = devices();
  const std::uint32_t formerIndex = mixer().source(AudioServer::speakerphoneSource)->index;
  recordVolumes(former);
  loadMicrophoneLast();
  server_->restart();
  AudioClient client = mixer();
  // For the speakerphone, that would be a press.
  client.setVolume(AudioServer::decoySource, 0.0);
  eventually([&] {
    const AudioObjectID device = find(AudioServer::speakerphoneName);
    return device != 0 && device != former && volumeOf(find(microphoneName)) == 0.0F;
  });
  if (GetParam() == AudioFlavour::PulseAudio) {
    EXPECT_EQ(client.source(AudioServer::decoySource)->index, formerIndex);
  }
  for (const AudioObjectID device : devices()) EXPECT_THAT(formerDevices, Not(Contains(device)));
  EXPECT_THAT(volumes_, IsEmpty());

  const AudioObjectID speakerphone = find(AudioServer::speakerphoneName);
  EXPECT_EQ(volumeOf(speakerphone), 1.0F);
  recordVolumes(speakerphone);
  for (const float volume : {0.5F, 0.0F, 0.5F}) {
    EXPECT_EQ(write(speakerphone, volume), audio::noError);
    // PipeWire's clients see a change at different moments.
    eventually([&] {
      return volumeOf(speakerphone) == volume && static_cast<float>(server_->volume()) == volume;
    });
  }
  EXPECT_THAT(volumes_, ElementsAre(0.5F, 0.0F, 0.5F));
  EXPECT_EQ(client.source(AudioServer::decoySource)->volume, 0.0);
}

TEST_P(PulseAudioServerTest, WriteForAFormerConnectionChangesNothing) {
  const auto reports = std::make_shared<PulseReportQueue>([] {});
  PulseThread thread(reports);
  reports->waitForReport(rehearsal::serverTimeout);
  const auto report = reports->takeUntil(Instant::max());
  ASSERT_TRUE(report);
  const std::uint32_t connection = std::get<PulseServerReport>(report->content).connection;
  AudioClient client = mixer();
  const auto write = [&](const char* source, float volume, std::uint32_t itsConnection) {
    pa_cvolume level{};
    pa_cvolume_set(&level, 1, static_cast<pa_volume_t>(volume * PA_VOLUME_NORM));
    thread.write({client.source(source)->index, level, false, itsConnection});
  };
  write(AudioServer::speakerphoneSource, 0.0F, connection - 1);
  write(AudioServer::decoySource, 0.5F, connection);
  eventually([&] { return client.source(AudioServer::decoySource)->volume == 0.5; });
  EXPECT_EQ(server_->volume(), 1.0);
  client.setVolume(AudioServer::decoySource, 1.0);
  reports->close();
}

TEST_P(PulseAudioServerTest, SurvivesRepeatedServerCrashes) {
  AudioObjectID last = start();
  for (int crash = 0; crash < 3; ++crash) {
    server_->restart();
    eventually([&] {
      const AudioObjectID now = find("Jabra Speak2 75");
      return now != 0 && now != last;
    });
    last = find("Jabra Speak2 75");
  }
}

TEST_P(PulseAudioServerTest, ConnectsToAServerThatStartsLater) {
  server_->kill();
  EXPECT_LT(timeOf([&] { hardware_ = std::make_unique<PulseAudioHardware>(); }), maxCallTime);
  EXPECT_THAT(devices(), IsEmpty());
  recordLists();
  server_->restart();
  eventually([&] { return find("Jabra Speak2 75") != 0; });
  EXPECT_FALSE(lists_.empty());
}

TEST_P(PulseAudioServerTest, FrozenServerDoesNotBlockReadsAndWrites) {
  const AudioObjectID device = start();
  recordVolumes(device);
  server_->freeze();
  EXPECT_LT(timeOf([&] {
              EXPECT_EQ(volumeOf(device), 1.0F);
              EXPECT_EQ(isRunning(device), false);
              EXPECT_EQ(nameOf(device), "Jabra Speak2 75");
              EXPECT_EQ(write(device, 0.5F), audio::noError);
            }),
            maxCallTime);
  EXPECT_LT(timeOf([] { rehearsal::letPass(100ms); }), 100ms + maxCallTime);
  EXPECT_EQ(volumeOf(device), 1.0F);
  server_->thaw();
  eventually([&] { return volumeOf(device) == 0.5F; });
  EXPECT_THAT(volumes_, ElementsAre(0.5F));
}

TEST_P(PulseAudioServerTest, WaitsForAFrozenServerUpToTheStartTimeout) {
  server_->freeze();
  const auto time = timeOf([&] { hardware_ = std::make_unique<PulseAudioHardware>(); });
  EXPECT_GE(time, PulseAudioHardware::startTimeout);
  EXPECT_LT(time, PulseAudioHardware::startTimeout + maxCallTime);
  EXPECT_THAT(devices(), IsEmpty());
  recordLists();
  server_->thaw();
  eventually([&] { return find("Jabra Speak2 75") != 0; });
  EXPECT_FALSE(lists_.empty());
}

TEST_P(PulseAudioServerTest, DoesNotWakeAnIdleLoop) {
  start();
  // The suspension of idle devices and other effects of plugging in come first.
  int quietSeconds = 0;
  for (int second = 0; quietSeconds < 3 && second < 20; ++second) {
    quietSeconds = wakeUpsInASecond() == 0 ? quietSeconds + 1 : 0;
  }
  EXPECT_EQ(quietSeconds, 3);
}

TEST_P(PulseAudioServerTest, ListenerMayDestroyTheAdapterWhenTheServerIsLost) {
  start();
  hardware_->addPropertyListener(audio::systemObject, audio::deviceList,
                                 [this] { hardware_.reset(); });
  server_->kill();
  eventually([&] { return hardware_ == nullptr; });
  rehearsal::letPass(2 * PulseConnection::minRetryDelay);
}

TEST_P(PulseAudioServerTest, ListenerMayDestroyTheAdapterWhenTheServerReturns) {
  server_->kill();
  hardware_ = std::make_unique<PulseAudioHardware>();
  hardware_->addPropertyListener(audio::systemObject, audio::deviceList,
                                 [this] { hardware_.reset(); });
  server_->restart();
  eventually([&] { return hardware_ == nullptr; });
  settle();
}

TEST_P(PulseAudioServerTest, CanBeDestroyedBetweenTwoAttempts) {
  start();
  server_->kill();
  eventually([&] { return devices().empty(); });
  hardware_.reset();
  rehearsal::letPass(2 * PulseConnection::minRetryDelay);
}

TEST_P(PulseAudioServerTest, FrozenServerDoesNotBlockDestruction) {
  const AudioObjectID device = start();
  server_->freeze();
  write(device, 0.5F);
  EXPECT_LT(timeOf([&] { hardware_.reset(); }), 1s);
  server_->thaw();
}

TEST_P(PulseAudioServerTest, ConnectionCancelsItsOperationsWhenItIsDestroyed) {
  struct Client final : PulseConnection::Client {
    void connected(pa_context&) override {}
    void disconnected() override {}
  };
  pa_glib_mainloop* const loop = pa_glib_mainloop_new(nullptr);
  Client client;
  auto connection = std::make_unique<PulseConnection>(*pa_glib_mainloop_get_api(loop), client);
  eventually([&] { return connection->context() != nullptr; });
  bool replied = false;
  pa_operation_unref(pa_context_get_server_info(
      connection->context(),
      [](pa_context*, const pa_server_info*, void* flag) { *static_cast<bool*>(flag) = true; },
      &replied));
  connection.reset();
  rehearsal::letPass(200ms);
  EXPECT_FALSE(replied);
  pa_glib_mainloop_free(loop);
}

HUSHBOX_ON_BOTH_AUDIO_SERVERS(PulseAudioServerTest);

}  // namespace
}  // namespace hushbox
