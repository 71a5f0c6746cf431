#include <gmock/gmock.h>

#include <utility>
#include <vector>

#include "tests/headset/JabraMonitorFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class JabraMonitorAttachmentTest : public JabraMonitorFixture {
 protected:
  /// Journals the values of the members at each announcement.
  void journalMembers() {
    subscription = monitor->objectWillChange.subscribe([this] {
      hear("name " + monitor->deviceName().value_or("none") + ", muted " +
           (monitor->isMuted() ? std::to_string(*monitor->isMuted()) : "unknown") + ", in call " +
           std::to_string(monitor->isInCall()));
    });
  }
};

// Plugging and unplugging

TEST_F(JabraMonitorAttachmentTest, AttachesToADeviceThatIsPluggedInLater) {
  start();
  journalMembers();
  desk.plugSpeakerphone(0);
  desk.journal.take();
  desk.loop.runUntilIdle();
  EXPECT_THAT(
      desk.journal.take(),
      ElementsAre(
          "audio: size 1 device list: 4 bytes -> 0", "audio: get 1 device list (4 bytes): 2 -> 0",
          "audio: text 2 name: \"Jabra Speak2 75\" -> 0", "audio: has 2 input volume: true",
          "audio: text 2 name: \"Jabra Speak2 75\" -> 0",
          "monitor: name none, muted unknown, in call 0",
          "audio: get 2 input volume (4 bytes): 0 -> 0",
          "monitor: name Jabra Speak2 75, muted unknown, in call 0",
          "audio: add listener 2 input volume -> added", "audio: get 2 running (4 bytes): 0 -> 0",
          "monitor: name Jabra Speak2 75, muted 1, in call 0",
          "audio: add listener 2 running -> added",
          "log: jabra info: Attached to Jabra Speak2 75 (id 2)"));
}

TEST_F(JabraMonitorAttachmentTest, UnpluggingTakesItsStepsInOrder) {
  startWithSpeakerphone();
  desk.audio.setRunning(speakerphone, true);
  desk.loop.runUntilIdle();
  journalMembers();
  desk.journal.take();
  desk.audio.unplug(speakerphone);
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take(), ElementsAre("audio: size 1 device list: 0 bytes -> 0",
                                               "audio: get 1 device list (0 bytes):  -> 0",
                                               "audio: remove listener 2 input volume -> !obj",
                                               "audio: remove listener 2 running -> !obj",
                                               "monitor: name Jabra Speak2 75, muted 0, in call 1",
                                               "monitor: name none, muted 0, in call 1",
                                               "monitor: name none, muted unknown, in call 1",
                                               "log: jabra info: Jabra input not present"));
  EXPECT_EQ(monitor->deviceName(), std::nullopt);
  EXPECT_EQ(monitor->isMuted(), std::nullopt);
  EXPECT_FALSE(monitor->isInCall());
}

TEST_F(JabraMonitorAttachmentTest, UnpluggingAnnouncesEvenWhatWasUnknown) {
  startWithUnknownState();
  desk.audio.unplug(speakerphone);
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.journal.take("monitor"), Lines(3, "will change"));
}

TEST_F(JabraMonitorAttachmentTest, MissingDeviceIsReportedOnce) {
  startWithSpeakerphone();
  desk.audio.unplug(speakerphone);
  desk.loop.runUntilIdle();
  desk.journal.take();
  plug("Microphone");
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take("log"), IsEmpty());
  EXPECT_THAT(desk.journal.take("monitor"), IsEmpty());
}

TEST_F(JabraMonitorAttachmentTest, DeviceThatLosesItsInputVolumeIsDetached) {
  startWithSpeakerphone();
  desk.audio.addFault({.operation = AudioOperation::hasProperty});
  desk.audio.announce(audio::systemObject, audio::deviceList);
  desk.loop.runUntilIdle();
  EXPECT_EQ(monitor->deviceName(), std::nullopt);
  // The device is still plugged in, so the removals succeed.
  EXPECT_THAT(desk.journal.take("audio"), testing::IsSupersetOf({
                                              "remove listener 2 input volume -> 0",
                                              "remove listener 2 running -> 0",
                                          }));
  EXPECT_EQ(desk.audio.listenerCount(), 1U);
}

TEST_F(JabraMonitorAttachmentTest, DeviceWhoseNameBecomesUnreadableIsDetached) {
  startWithSpeakerphone();
  desk.audio.addFault({.operation = AudioOperation::getPropertyText,
                       .address = audio::deviceName,
                       .status = audio::badObject});
  desk.audio.announce(audio::systemObject, audio::deviceList);
  desk.loop.runUntilIdle();
  EXPECT_EQ(monitor->deviceName(), std::nullopt);
  EXPECT_EQ(lastRecord(), "Jabra input not present");
}

TEST_F(JabraMonitorAttachmentTest, ListChangeWithTheSameDeviceChangesAndLogsNothing) {
  startWithSpeakerphone(0);
  setVolume(0.5F);
  plug("Microphone");
  desk.journal.take();
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take(), ElementsAre("audio: size 1 device list: 8 bytes -> 0",
                                               "audio: get 1 device list (8 bytes): 2 3 -> 0",
                                               "audio: text 2 name: \"Jabra Speak2 75\" -> 0",
                                               "audio: has 2 input volume: true"));
  EXPECT_EQ(desk.audio.listenerCount(), 3U);
}

TEST_F(JabraMonitorAttachmentTest, DeviceEarlierInTheListReplacesTheAttachedOne) {
  startWithSpeakerphone(0);
  journalMembers();
  desk.audio.plug({"Jabra next", 0.5F, 1}, 0);
  desk.journal.take();
  desk.loop.runUntilIdle();
  EXPECT_THAT(
      desk.journal.take(),
      ElementsAre(
          "audio: size 1 device list: 8 bytes -> 0", "audio: get 1 device list (8 bytes): 3 2 -> 0",
          "audio: text 3 name: \"Jabra next\" -> 0", "audio: has 3 input volume: true",
          "audio: remove listener 2 input volume -> 0", "audio: remove listener 2 running -> 0",
          "audio: text 3 name: \"Jabra next\" -> 0",
          "monitor: name Jabra Speak2 75, muted 1, in call 0",
          "audio: get 3 input volume (4 bytes): 0.5 -> 0",
          "monitor: name Jabra next, muted 1, in call 0",
          "audio: add listener 3 input volume -> added", "audio: get 3 running (4 bytes): 1 -> 0",
          "monitor: name Jabra next, muted 0, in call 0", "audio: add listener 3 running -> added",
          "log: jabra info: Attached to Jabra next (id 3)"));
  EXPECT_TRUE(monitor->isInCall());
}

TEST_F(JabraMonitorAttachmentTest, DeviceIsAttachedWhenItsNameIsAnnounced) {
  start();
  bool isFirst = true;
  subscription = monitor->objectWillChange.subscribe([&] {
    if (std::exchange(isFirst, false)) monitor->setMuted(true);
  });
  speakerphone = desk.plugSpeakerphone(0.8F);
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.audio.inputVolume(speakerphone), 0);
  EXPECT_EQ(monitor->isMuted(), true);
}

TEST_F(JabraMonitorAttachmentTest, DeviceLikeTheFormerOneIsAnnouncedInFull) {
  startWithSpeakerphone(0.8F);
  desk.audio.plug({"Jabra Speak2 75", 0.8F}, 0);
  desk.loop.runUntilIdle();
  // The name, the mute state and the use.
  EXPECT_EQ(desk.journal.take("monitor"), Lines(3, "will change"));
  EXPECT_EQ(lastRecord(), "Attached to Jabra Speak2 75 (id 3)");
}

TEST_F(JabraMonitorAttachmentTest, ListenerThatCouldNotBeAddedIsNotRemoved) {
  speakerphone = desk.plugSpeakerphone();
  desk.audio.addFault({.operation = AudioOperation::addPropertyListener});
  start();
  desk.journal.take();
  desk.audio.unplug(speakerphone);
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take("audio"),
              ElementsAre("size 1 device list: 0 bytes -> 0", "get 1 device list (0 bytes):  -> 0",
                          "remove listener 2 running -> !obj"));
  desk.audio.clearFaults();
  desk.audio.addFault(
      {.operation = AudioOperation::addPropertyListener, .address = audio::runningSomewhere});
  speakerphone = desk.plugSpeakerphone();
  desk.loop.runUntilIdle();
  desk.journal.take();
  desk.audio.unplug(speakerphone);
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take("audio"),
              ElementsAre("size 1 device list: 0 bytes -> 0", "get 1 device list (0 bytes):  -> 0",
                          "remove listener 3 input volume -> !obj"));
}

TEST_F(JabraMonitorAttachmentTest, LateNotificationOfTheFormerDeviceReadsTheCurrentOne) {
  startWithSpeakerphone(0.8F);
  desk.audio.setAnnouncementDelay(1s);
  desk.audio.setInputVolume(speakerphone, 0);
  desk.audio.setAnnouncementDelay(0s);
  desk.audio.plug({"Jabra next", 0.5F}, 0);
  desk.loop.runUntilIdle();
  ASSERT_EQ(monitor->deviceName(), "Jabra next");
  desk.journal.take();
  desk.advance(10s);
  EXPECT_THAT(desk.journal.take("audio"), ElementsAre("get 3 input volume (4 bytes): 0.5 -> 0"));
  EXPECT_EQ(monitor->isMuted(), false);
}

// Calls

TEST_F(JabraMonitorAttachmentTest, UseOfTheDeviceIsACall) {
  startWithSpeakerphone();
  desk.audio.setRunning(speakerphone, true);
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("audio: get 2 running (4 bytes): 1 -> 0", "monitor: will change",
                          "log: jabra info: Jabra mic in use -> true", "monitor: call started"));
  EXPECT_TRUE(monitor->isInCall());
}

TEST_F(JabraMonitorAttachmentTest, AnyNumberButZeroMeansInUse) {
  start();
  desk.audio.plug({.name = "Jabra Speak2 75", .inputVolume = 0.8F, .running = 2});
  desk.loop.runUntilIdle();
  EXPECT_TRUE(monitor->isInCall());
}

TEST_F(JabraMonitorAttachmentTest, EndOfUseEndsTheCallWithoutACallback) {
  startWithSpeakerphone();
  desk.audio.setRunning(speakerphone, true);
  desk.loop.runUntilIdle();
  desk.journal.take();
  desk.audio.setRunning(speakerphone, false);
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("audio: get 2 running (4 bytes): 0 -> 0", "monitor: will change",
                          "log: jabra info: Jabra mic in use -> false"));
  EXPECT_FALSE(monitor->isInCall());
}

TEST_F(JabraMonitorAttachmentTest, UnchangedUseIsNotAnnounced) {
  startWithSpeakerphone();
  for (const bool running : {false, true}) {
    desk.audio.setRunning(speakerphone, running);
    desk.loop.runUntilIdle();
    desk.journal.take();
    desk.audio.announce(speakerphone, audio::runningSomewhere);
    desk.loop.runUntilIdle();
    EXPECT_THAT(desk.journal.take(), ElementsAre(testing::StartsWith("audio: get 2 running")));
  }
}

TEST_F(JabraMonitorAttachmentTest, EachNewUseIsACallStart) {
  startWithSpeakerphone();
  for (const bool running : {true, false, true, false}) {
    desk.audio.setRunning(speakerphone, running);
    desk.loop.runUntilIdle();
  }
  EXPECT_THAT(takeEvents(), ElementsAre("call started", "call started"));
}

TEST_F(JabraMonitorAttachmentTest, UnreadableUseEndsTheCall) {
  startWithSpeakerphone();
  desk.audio.setRunning(speakerphone, true);
  desk.loop.runUntilIdle();
  desk.audio.addFault({.address = audio::runningSomewhere, .status = audio::hardwareNotRunning});
  desk.audio.announce(speakerphone, audio::runningSomewhere);
  desk.loop.runUntilIdle();
  EXPECT_FALSE(monitor->isInCall());
  EXPECT_EQ(lastRecord(), "Jabra mic in use -> false");
}

TEST_F(JabraMonitorAttachmentTest, IsInCallIsTrueWhenTheCallbackRuns) {
  startWithSpeakerphone();
  bool seen = false;
  monitor->onCallStarted = [&] { seen = monitor->isInCall(); };
  desk.audio.setRunning(speakerphone, true);
  desk.loop.runUntilIdle();
  EXPECT_TRUE(seen);
}

TEST_F(JabraMonitorAttachmentTest, EmptyCallStartCallbackIsFine) {
  startWithSpeakerphone();
  monitor->onCallStarted = nullptr;
  desk.audio.setRunning(speakerphone, true);
  desk.loop.runUntilIdle();
  EXPECT_TRUE(monitor->isInCall());
}

TEST_F(JabraMonitorAttachmentTest, LateUseNotificationOfAnUnpluggedDeviceReadsNothing) {
  startWithSpeakerphone();
  desk.audio.setAnnouncementDelay(1s);
  desk.audio.setRunning(speakerphone, true);
  desk.audio.setAnnouncementDelay(0s);
  desk.audio.unplug(speakerphone);
  desk.loop.runUntilIdle();
  desk.journal.take();
  desk.advance(10s);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
}

// Destruction

TEST_F(JabraMonitorAttachmentTest, ListenersOfADestroyedMonitorStayAndDoNothing) {
  startWithSpeakerphone();
  release();
  EXPECT_EQ(desk.audio.listenerCount(), 3U);
  desk.journal.take();
  desk.audio.setInputVolume(speakerphone, 0);
  desk.audio.setRunning(speakerphone, true);
  plug("Jabra next");
  desk.advance(1s);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
}

}  // namespace
}  // namespace hushbox
