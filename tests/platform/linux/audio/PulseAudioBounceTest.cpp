#include <pulse/pulseaudio.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "platform/linux/mainloop/GLibMainLoop.h"
#include "rehearsal/ProcessorWait.h"
#include "rehearsal/ScratchFolder.h"
#include "tests/platform/linux/fixtures/PulseAudioFixture.h"

namespace hushbox {
namespace {

using rehearsal::AudioClient;
using rehearsal::Milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr float level = 0.75F;

/// Restores the speakerphone's volume as soon as it learns of a drop, on a thread of its own.
class RestoringProgram {
 public:
  RestoringProgram(const std::string& address, Milliseconds delay)
      : delay_(delay), client_(address, "Meeting") {
    {
      const AudioClient::Lock lock(client_);
      pa_context_set_subscribe_callback(client_.context(), &onEvent, this);
      pa_operation_unref(pa_context_subscribe(
          client_.context(), PA_SUBSCRIPTION_MASK_SOURCE,
          [](pa_context*, int, void* subscribed) {
            *static_cast<std::atomic<bool>*>(subscribed) = true;
            rehearsal::wakeWaiters();
          },
          &isSubscribed_));
    }
    // A drop on another connection may be handled before the subscription.
    rehearsal::waitUntil([this] { return isSubscribed_.load(); }, rehearsal::serverTimeout,
                         "the subscription of the restoring program");
  }

  int restored() const { return restored_; }

 private:
  static void onEvent(pa_context* context, pa_subscription_event_type_t, std::uint32_t,
                      void* self) {
    pa_operation_unref(pa_context_get_source_info_by_name(
        context, rehearsal::AudioServer::speakerphoneSource, &onSource, self));
  }
  static void onSource(pa_context* context, const pa_source_info* info, int last, void* self) {
    auto& program = *static_cast<RestoringProgram*>(self);
    if (last != 0 || pa_cvolume_is_muted(&info->volume) == 0) return;
    std::this_thread::sleep_for(program.delay_);
    pa_cvolume volume;
    pa_cvolume_set(&volume, 1, static_cast<pa_volume_t>(level * PA_VOLUME_NORM));
    pa_operation_unref(pa_context_set_source_volume_by_index(
        context, info->index, &volume,
        [](pa_context*, int, void* restored) {
          ++*static_cast<std::atomic<int>*>(restored);
          rehearsal::wakeWaiters();
        },
        &program.restored_));
  }

  const Milliseconds delay_;
  std::atomic<bool> isSubscribed_ = false;
  std::atomic<int> restored_ = 0;
  AudioClient client_;
};

/// Measures the adapter's thread, by leaving out the main thread and libpulse's own threads, which
/// serve the other programs of these tests: their waits cannot hide a drop.
bool isOfTheAdapter(pid_t thread, const std::string& name) {
  return thread != getpid() && name != "threaded-ml";
}

/// Drops of the volume that another program restores.
class PulseAudioBounceTest : public PulseAudioFixture {
 protected:
  void SetUp() override {
    PulseAudioFixture::SetUp();
    device_ = start();
    write(device_, level);
    eventually([&] { return volumeOf(device_) == level; });
    recordVolumes(device_);
  }

  static std::string address() { return session_->environment().at("PULSE_SERVER"); }

  /// Drops the volume that many times while the loop runs; each is restored after `delay`. Drops
  /// during which a thread waited longer than `tolerated` for a processor do not count: on a busy
  /// machine the restoring program may be first, whatever the adapter does. Expects that all but
  /// `allowed` of the others were seen.
  void expectToSeeDrops(int count, Milliseconds delay, std::chrono::nanoseconds tolerated,
                        int allowed = 0) {
    const auto call = server_->record();
    // A drop within 100 ms of a stream that starts is only seen if it lasts.
    rehearsal::letPass(Milliseconds{150});
    const RestoringProgram program(address(), delay);
    AudioClient button(address(), "Button");
    int undisturbed = 0;
    int missed = 0;
    for (int done = 0; done < count; ++done) {
      const int seenBefore = seenDrops();
      const rehearsal::ProcessorWait wait({getpid()}, isOfTheAdapter);
      std::thread press([&] { button.setVolume(AudioServer::speakerphoneSource, 0.0); });
      eventually([&] { return program.restored() > done; });
      press.join();
      // Longer than it takes to deliver both changes, and as short as a finger is fast.
      rehearsal::letPass(Milliseconds{60});
      const auto waited = wait.longest();
      // On a busy machine the delivery takes longer than that.
      const bool isSeen =
          rehearsal::holdsWithin([&] { return seenDrops() > seenBefore; }, Milliseconds{500});
      eventually([&] { return seenReturns() == seenDrops(); });
      if (waited > tolerated) continue;
      ++undisturbed;
      if (!isSeen) ++missed;
    }
    RecordProperty("undisturbed", undisturbed);
    RecordProperty("missed", missed);
    EXPECT_LE(seenDrops(), count);
    if (undisturbed < count / 2) GTEST_SKIP() << "This machine is too busy to time a bounce.";
    EXPECT_LE(missed, allowed) << "of " << undisturbed;
  }

  int seenDrops() const { return static_cast<int>(std::ranges::count(volumes_, 0.0F)); }
  int seenReturns() const { return static_cast<int>(std::ranges::count(volumes_, level)); }

  AudioObjectID device_ = 0;
};

TEST_P(PulseAudioBounceTest, SeesEveryDropThatIsRestoredAfterTwentyMilliseconds) {
  expectToSeeDrops(20, Milliseconds{20}, Milliseconds{5});
}

TEST_P(PulseAudioBounceTest, SeesEveryDropThatIsRestoredAfterFiveMilliseconds) {
  expectToSeeDrops(40, Milliseconds{5}, Milliseconds{1});
}

TEST_P(PulseAudioBounceTest, SeesDropsThatAreRestoredAtOnce) {
  expectToSeeDrops(100, Milliseconds{0}, std::chrono::microseconds{100}, 1);
}

TEST_P(PulseAudioBounceTest, SeesDropsWhileTheLoopIsBusy) {
  const RestoringProgram program(address(), Milliseconds{100});
  AudioClient button(address(), "Button");
  for (int done = 0; done < 10; ++done) {
    button.setVolume(AudioServer::speakerphoneSource, 0.0);
    // The main context does not run meanwhile.
    const auto deadline = std::chrono::steady_clock::now() + rehearsal::serverTimeout;
    while (program.restored() <= done && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(Milliseconds{1});
    }
    std::this_thread::sleep_for(Milliseconds{20});
  }
  EXPECT_THAT(volumes_, IsEmpty());
  eventually([&] { return seenReturns() == 10; });
  EXPECT_EQ(seenDrops(), 10);
}

TEST_P(PulseAudioBounceTest, SuspendingAndResumingIsNotADrop) {
  AudioClient client(address(), "Mixer");
  for (int i = 0; i < 40; ++i) {
    const AudioClient::Lock lock(client);
    pa_operation_unref(pa_context_suspend_source_by_name(
        client.context(), AudioServer::speakerphoneSource, i % 2 == 0 ? 1 : 0, nullptr, nullptr));
  }
  settle();
  EXPECT_THAT(volumes_, IsEmpty());
}

TEST_P(PulseAudioBounceTest, ShortStreamsAndMetersAreNotDrops) {
  for (int i = 0; i < 5; ++i) {
    server_->corkedRecord();
    server_->record();
    server_->meter();
  }
  settle();
  EXPECT_THAT(volumes_, IsEmpty());
}

TEST_P(PulseAudioBounceTest, MovingASliderIsNotADrop) {
  AudioClient mixer(address(), "Mixer");
  for (int i = 0; i < 100; ++i) {
    pa_cvolume volume;
    pa_cvolume_set(&volume, 1, PA_VOLUME_NORM / 2 + static_cast<pa_volume_t>(i % 10) * 100);
    const AudioClient::Lock lock(mixer);
    pa_operation_unref(pa_context_set_source_volume_by_name(
        mixer.context(), AudioServer::speakerphoneSource, &volume, nullptr, nullptr));
  }
  settle();
  EXPECT_EQ(seenDrops(), 0);
}

HUSHBOX_ON_BOTH_AUDIO_SERVERS(PulseAudioBounceTest);

/// Events of kinds that only PulseAudio's command line raises.
class PulseAudioCommandTest : public PulseAudioBounceTest {
 protected:
  void SetUp() override {
    PulseAudioBounceTest::SetUp();
    recordLists();
    const std::string path = scratch_.path() / "cli";
    AudioClient(address(), "Administrator")
        .loadModule("module-cli-protocol-unix", "socket=" + path);
    sockaddr_un socketAddress{};
    socketAddress.sun_family = AF_UNIX;
    path.copy(socketAddress.sun_path, sizeof socketAddress.sun_path - 1);
    ASSERT_EQ(
        connect(socket_, reinterpret_cast<const sockaddr*>(&socketAddress), sizeof socketAddress),
        0);
  }
  ~PulseAudioCommandTest() override { close(socket_); }

  void command(const std::string& line) {
    const std::string text = line + "\n";
    EXPECT_EQ(::write(socket_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }

  const std::string update_ =
      std::string("update-source-proplist ") + AudioServer::speakerphoneSource + " ";

 private:
  rehearsal::ScratchFolder scratch_;
  const int socket_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

TEST_P(PulseAudioCommandTest, PropertyListsAreNotDrops) {
  for (int i = 0; i < 10; ++i) {
    command(update_ + "device.note=same");
    rehearsal::letPass(Milliseconds{20});
  }
  command(update_ + "device.note=other");
  settle();
  EXPECT_THAT(volumes_, IsEmpty());
}

TEST_P(PulseAudioCommandTest, RenamingIsNotADrop) {
  command(update_ + "device.description=Renamed");
  eventually([&] { return nameOf(device_) == "Renamed"; });
  command(update_ + "device.description=\"Jabra Speak2 75\"");
  eventually([&] { return nameOf(device_) == "Jabra Speak2 75"; });
  settle();
  EXPECT_THAT(volumes_, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(PulseAudio, PulseAudioCommandTest,
                         testing::Values(rehearsal::AudioFlavour::PulseAudio),
                         [](const auto&) { return "PulseAudio"; });

/// Timers beside states that happened while the loop was busy.
class PulseAudioOrderTest : public PulseAudioBounceTest {
 protected:
  void SetUp() override {
    loop_.emplace();
    PulseAudioBounceTest::SetUp();
    loop_->setBeforeTimer([this](Instant due) {
      if (hardware_) hardware_->deliverUntil(due);
    });
    volumes_.clear();
  }
  void TearDown() override {
    PulseAudioBounceTest::TearDown();
    loop_.reset();
  }

  std::optional<GLibMainLoop> loop_;
};

TEST_P(PulseAudioOrderTest, TimerDoesNotOvertakeAnEarlierState) {
  constexpr float timerMark = -1.0F;
  // The drop lasts long enough for its state to be requested, on a busy machine as well.
  loop_->mainAsyncAfter(TimeInterval(0.6), WorkItem([&] { volumes_.push_back(timerMark); }));
  server_->setVolume(0.0);
  std::this_thread::sleep_for(Milliseconds{150});
  server_->setVolume(level);
  std::this_thread::sleep_for(Milliseconds{600});
  server_->setVolume(0.5);
  std::this_thread::sleep_for(Milliseconds{50});
  eventually([&] { return volumes_.size() == 4; });
  EXPECT_THAT(volumes_, ElementsAre(0.0F, level, timerMark, 0.5F));
}

HUSHBOX_ON_BOTH_AUDIO_SERVERS(PulseAudioOrderTest);

}  // namespace
}  // namespace hushbox
