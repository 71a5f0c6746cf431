#include <gmock/gmock.h>

#include <utility>
#include <vector>

#include "tests/headset/JabraMonitorFixture.h"

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class JabraMonitorDiscoveryTest : public JabraMonitorFixture {};

// Finding the device

TEST_F(JabraMonitorDiscoveryTest, StartsUnattachedWithoutADevice) {
  start();
  EXPECT_THAT(desk.journal.take(), ElementsAre("audio: add listener 1 device list -> added",
                                               "audio: size 1 device list: 0 bytes -> 0",
                                               "audio: get 1 device list (0 bytes):  -> 0"));
  EXPECT_EQ(monitor->deviceName(), std::nullopt);
  EXPECT_EQ(monitor->isMuted(), std::nullopt);
  EXPECT_FALSE(monitor->isInCall());
}

TEST_F(JabraMonitorDiscoveryTest, AttachingTakesItsStepsInOrder) {
  plug("Built-in Microphone");
  plug("Jabra Speak2 75", 0.8F);
  start();
  EXPECT_THAT(
      desk.journal.take(),
      ElementsAre(
          "audio: add listener 1 device list -> added", "audio: size 1 device list: 8 bytes -> 0",
          "audio: get 1 device list (8 bytes): 2 3 -> 0",
          "audio: text 2 name: \"Built-in Microphone\" -> 0",
          "audio: text 3 name: \"Jabra Speak2 75\" -> 0", "audio: has 3 input volume: true",
          "audio: text 3 name: \"Jabra Speak2 75\" -> 0",
          "audio: get 3 input volume (4 bytes): 0.8 -> 0",
          "audio: add listener 3 input volume -> added", "audio: get 3 running (4 bytes): 0 -> 0",
          "audio: add listener 3 running -> added",
          "log: jabra info: Attached to Jabra Speak2 75 (id 3)"));
  EXPECT_EQ(monitor->deviceName(), "Jabra Speak2 75");
  EXPECT_EQ(monitor->isMuted(), false);
  EXPECT_FALSE(monitor->isInCall());
}

TEST_F(JabraMonitorDiscoveryTest, LogsUnderTheApplicationsSubsystem) {
  startWithSpeakerphone();
  EXPECT_THAT(desk.log.records(),
              ElementsAre(LogRecord{"org.hushbox.Hushbox", "jabra", LogLevel::info,
                                    "Attached to Jabra Speak2 75 (id 2)"}));
}

TEST_F(JabraMonitorDiscoveryTest, DeviceWithoutInputVolumeIsSkipped) {
  plug("Jabra Speak2 75", std::nullopt);
  plug("Jabra Evolve");
  start();
  EXPECT_EQ(monitor->deviceName(), "Jabra Evolve");
}

TEST_F(JabraMonitorDiscoveryTest, SearchStopsAtTheFirstMatchInTheList) {
  plug("Jabra one");
  plug("Jabra two");
  start();
  EXPECT_EQ(monitor->deviceName(), "Jabra one");
  for (const std::string& line : desk.journal.take("audio")) {
    EXPECT_THAT(line, testing::Not(testing::HasSubstr(" 3 name")));
  }
}

TEST_F(JabraMonitorDiscoveryTest, NameMustContainTheExactWord) {
  const std::vector<std::pair<std::string, bool>> cases = {{"Jabra", true},
                                                           {"My Jabra Link", true},
                                                           {"GN Jabras", true},
                                                           {"jabra Speak2 75", false},
                                                           {"JABRA Speak2 75", false},
                                                           {"Jab ra", false},
                                                           {"", false},
                                                           {"Jabra\u0301 75", false},
                                                           {"\u0301Jabra", true}};
  for (const auto& [name, matches] : cases) {
    const AudioObjectID id = plug(name);
    start();
    EXPECT_EQ(monitor->deviceName().has_value(), matches) << name;
    release();
    desk.audio.unplug(id);
    desk.loop.runUntilIdle();
  }
}

TEST_F(JabraMonitorDiscoveryTest, DeviceWithAnUnreadableNameIsSkipped) {
  desk.audio.plug({.name = std::nullopt, .inputVolume = 0.5F});
  desk.audio.addFault({.operation = AudioOperation::getPropertyText,
                       .address = audio::deviceName,
                       .status = audio::badObject,
                       .object = plug("Jabra broken")});
  plug("Jabra Speak2 75");
  start();
  EXPECT_EQ(monitor->deviceName(), "Jabra Speak2 75");
}

TEST_F(JabraMonitorDiscoveryTest, UnreadableSizeOfTheDeviceListMeansNoDevices) {
  desk.audio.addFault({.operation = AudioOperation::getPropertyDataSize,
                       .address = audio::deviceList,
                       .status = audio::hardwareNotRunning});
  desk.plugSpeakerphone();
  start();
  EXPECT_THAT(desk.journal.take("audio"), ElementsAre("add listener 1 device list -> added",
                                                      "size 1 device list: 0 bytes -> stop",
                                                      "get 1 device list (0 bytes):  -> 0"));
  EXPECT_EQ(monitor->deviceName(), std::nullopt);
}

TEST_F(JabraMonitorDiscoveryTest, UnreadableDeviceListMatchesNothing) {
  desk.audio.addFault({.operation = AudioOperation::getPropertyData,
                       .address = audio::deviceList,
                       .status = audio::hardwareNotRunning});
  desk.plugSpeakerphone();
  plug("Jabra two");
  start();
  EXPECT_THAT(desk.journal.take("audio"),
              ElementsAre("add listener 1 device list -> added", "size 1 device list: 8 bytes -> 0",
                          "get 1 device list (8 bytes): -> stop", "text 0 name: -> !obj",
                          "text 0 name: -> !obj"));
  EXPECT_EQ(monitor->deviceName(), std::nullopt);
}

TEST_F(JabraMonitorDiscoveryTest, StatusesOfTheDeviceListAreIgnored) {
  desk.audio.addFault({.operation = AudioOperation::getPropertyDataSize,
                       .address = audio::deviceList,
                       .status = audio::hardwareNotRunning,
                       .size = 4});
  desk.plugSpeakerphone();
  start();
  EXPECT_EQ(monitor->deviceName(), "Jabra Speak2 75");
}

TEST_F(JabraMonitorDiscoveryTest, DeviceListHasAsManyEntriesAsItsSizeHolds) {
  for (const auto& [size, line] : {std::pair{3U, "get 1 device list (0 bytes):  -> 0"},
                                   {4U, "get 1 device list (4 bytes): 2 -> 0"},
                                   {7U, "get 1 device list (4 bytes): 2 -> 0"},
                                   {9U, "get 1 device list (8 bytes): 2 3 -> 0"},
                                   {16U, "get 1 device list (16 bytes): 2 3 -> 0"}}) {
    SCOPED_TRACE(size);
    if (desk.audio.deviceList().empty()) {
      plug("Microphone");
      plug("Loopback");
    }
    desk.audio.clearFaults();
    desk.audio.addFault({.operation = AudioOperation::getPropertyDataSize,
                         .address = audio::deviceList,
                         .size = size});
    desk.journal.take();
    start();
    EXPECT_THAT(desk.journal.take("audio"), testing::Contains(line));
    release();
  }
}

// Values read when attaching

TEST_F(JabraMonitorDiscoveryTest, OnlyAVolumeOfExactlyZeroIsMuted) {
  for (const auto& [volume, muted] :
       {std::pair{0.0F, true}, {-0.0F, true}, {1e-30F, false}, {1.0F, false}, {-0.5F, false}}) {
    const AudioObjectID id = desk.plugSpeakerphone(volume);
    start();
    EXPECT_EQ(monitor->isMuted(), muted) << volume;
    release();
    desk.audio.unplug(id);
    desk.loop.runUntilIdle();
  }
}

TEST_F(JabraMonitorDiscoveryTest, UnmutingRestoresTheVolumeSeenWhenAttaching) {
  startWithSpeakerphone(0.3F);
  desk.audio.addFault({.status = audio::hardwareNotRunning, .times = 1});
  monitor->setMuted(true);
  monitor->setMuted(false);
  EXPECT_EQ(desk.audio.inputVolume(speakerphone), 0.3F);
}

TEST_F(JabraMonitorDiscoveryTest, UnmutingNeverRestoresAVolumeBelowZero) {
  startWithSpeakerphone(-0.5F);
  monitor->setMuted(true);
  monitor->setMuted(false);
  EXPECT_EQ(desk.audio.inputVolume(speakerphone), 0.6F);
}

TEST_F(JabraMonitorDiscoveryTest, UnreadableVolumeLeavesTheStateUnknownAndUnannounced) {
  start();
  desk.audio.addFault({.status = audio::hardwareNotRunning, .times = 1});
  speakerphone = desk.plugSpeakerphone(0.3F);
  desk.loop.runUntilIdle();
  // The name and the use.
  EXPECT_EQ(desk.journal.take("monitor"), Lines(2, "will change"));
  EXPECT_EQ(monitor->isMuted(), std::nullopt);
  EXPECT_EQ(monitor->deviceName(), "Jabra Speak2 75");
  monitor->setMuted(false);
  EXPECT_EQ(desk.audio.inputVolume(speakerphone), 0.6F);
}

TEST_F(JabraMonitorDiscoveryTest, UnreadableVolumeOfTheNextDeviceKeepsTheState) {
  startWithSpeakerphone(0);
  const AudioObjectID next = desk.audio.plug({"Jabra next", 0.5F}, 0);
  desk.audio.addFault({.status = audio::hardwareNotRunning, .object = next});
  desk.loop.runUntilIdle();
  EXPECT_EQ(monitor->deviceName(), "Jabra next");
  EXPECT_EQ(monitor->isMuted(), true);
}

TEST_F(JabraMonitorDiscoveryTest, AttachingToADeviceInUseIsACallButNotACallStart) {
  start();
  desk.audio.plug({.name = "Jabra Speak2 75", .inputVolume = 0.5F, .running = true});
  desk.loop.runUntilIdle();
  EXPECT_TRUE(monitor->isInCall());
  EXPECT_THAT(takeEvents(), IsEmpty());
  EXPECT_THAT(desk.log.texts("jabra"), ElementsAre("Attached to Jabra Speak2 75 (id 2)"));
}

TEST_F(JabraMonitorDiscoveryTest, UnreadableUseIsNotACall) {
  desk.audio.addFault({.address = audio::runningSomewhere, .status = audio::hardwareNotRunning});
  desk.audio.plug({.name = "Jabra Speak2 75", .inputVolume = 0.5F, .running = true});
  start();
  EXPECT_FALSE(monitor->isInCall());
}

TEST_F(JabraMonitorDiscoveryTest, NameThatBecomesUnreadableIsEmpty) {
  desk.makeNameReadableOnce();
  desk.plugSpeakerphone();
  start();
  EXPECT_EQ(monitor->deviceName(), "");
  EXPECT_THAT(desk.log.texts("jabra"), ElementsAre("Attached to  (id 2)"));
}

TEST_F(JabraMonitorDiscoveryTest, OutputOfAFailedReadIsNotUsed) {
  desk.audio.setOutputOfFailedReads(std::byte{0x3F}, "Jabra garbage");
  desk.audio.plug({.name = std::nullopt, .inputVolume = 0.5F});
  const AudioObjectID broken = plug("Jabra broken");
  desk.plugSpeakerphone();
  // The codes of failures are positive numbers; other failures are negative ones.
  for (const AudioStatus status : {audio::hardwareNotRunning, AudioStatus{-50}}) {
    SCOPED_TRACE(status);
    desk.audio.clearFaults();
    desk.audio.addFault({.operation = AudioOperation::getPropertyText,
                         .address = audio::deviceName,
                         .status = status,
                         .object = broken});
    desk.audio.addFault({.status = status, .times = 1});
    desk.audio.addFault({.address = audio::runningSomewhere, .status = status});
    start();
    EXPECT_EQ(monitor->deviceName(), "Jabra Speak2 75");
    EXPECT_EQ(monitor->isMuted(), std::nullopt);
    EXPECT_FALSE(monitor->isInCall());
    release();
  }
}

}  // namespace
}  // namespace hushbox
