#include "platform/simulated/SimulatedAudioHardware.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "tests/platform/simulated/CaughtViolations.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class SimulatedAudioHardwareTest : public testing::Test {
 protected:
  AudioObjectID plug(const std::string& name = "Jabra Speak2 75", float volume = 0.8F) {
    return audio.plug({.name = name, .inputVolume = volume});
  }

  AudioStatus read(AudioObjectID device, float& volume) {
    std::uint32_t size = sizeof volume;
    return audio.getPropertyData(device, audio::inputVolume, size, &volume);
  }

  AudioStatus write(AudioObjectID device, float volume) {
    return audio.setPropertyData(device, audio::inputVolume, sizeof volume, &volume);
  }

  /// Adds a listener that notes the volume at each call.
  RegistrationToken listen(AudioObjectID device) {
    return audio.addPropertyListener(
        device, audio::inputVolume, [this, device] { heard.push_back(audio.inputVolume(device)); });
  }

  Journal journal;
  SimulatedMainLoop loop{journal};
  SimulatedAudioHardware audio{journal, loop};
  std::vector<float> heard;
};

TEST_F(SimulatedAudioHardwareTest, JournalRecordsEveryCallWithInputAndResult) {
  const AudioObjectID device = plug();
  plug("Other");
  std::uint32_t size = 0;
  AudioObjectID list[2] = {};
  std::string name;
  float volume = 0;
  std::uint32_t running = 7;
  audio.getPropertyDataSize(audio::systemObject, audio::deviceList, size);
  audio.getPropertyData(audio::systemObject, audio::deviceList, size, list);
  audio.getPropertyText(device, audio::deviceName, name);
  audio.hasProperty(device, audio::inputVolume);
  read(device, volume);
  size = sizeof running;
  audio.getPropertyData(device, audio::runningSomewhere, size, &running);
  auto listener = listen(device);
  write(device, 0);
  audio.removePropertyListener(device, audio::inputVolume, std::move(listener));
  audio.getPropertyDataSize(device, audio::deviceName, size);
  EXPECT_EQ(journal.take("audio"),
            (Lines{"size 1 device list: 8 bytes -> 0", "get 1 device list (8 bytes): 2 3 -> 0",
                   "text 2 name: \"Jabra Speak2 75\" -> 0", "has 2 input volume: true",
                   "get 2 input volume (4 bytes): 0.8 -> 0", "get 2 running (4 bytes): 0 -> 0",
                   "add listener 2 input volume -> added", "set 2 input volume (4 bytes): 0 -> 0",
                   "remove listener 2 input volume -> 0", "size 2 name: 8 bytes -> 0"}));
}

TEST_F(SimulatedAudioHardwareTest, FailuresHaveDistinctStatuses) {
  const AudioObjectID silent = audio.plug({.name = std::nullopt, .inputVolume = std::nullopt});
  const AudioObjectID missing = 99;
  std::string name;
  float volume = 0;
  std::uint32_t size = 2;
  EXPECT_EQ(read(missing, volume), audio::badObject);
  EXPECT_EQ(read(silent, volume), audio::unknownProperty);
  EXPECT_EQ(write(missing, 0.5F), audio::badObject);
  EXPECT_EQ(write(silent, 0.5F), audio::unknownProperty);
  EXPECT_EQ(audio.getPropertyText(silent, audio::deviceName, name), audio::unsupportedOperation);
  EXPECT_EQ(audio.getPropertyText(plug(), audio::inputVolume, name), audio::unsupportedOperation);
  EXPECT_EQ(audio.getPropertyData(silent, audio::runningSomewhere, size, &volume),
            audio::badPropertySize);
  EXPECT_EQ(audio.getPropertyData(silent, audio::deviceName, size, &volume),
            audio::unsupportedOperation);
  EXPECT_EQ(audio.removePropertyListener(missing, audio::inputVolume, RegistrationToken()),
            audio::badObject);
  EXPECT_FALSE(audio.hasProperty(silent, audio::inputVolume));
  EXPECT_TRUE(audio.hasProperty(silent, audio::deviceName));
  EXPECT_EQ(journal.take("audio").front(), "get 99 input volume (4 bytes): -> !obj");
}

TEST_F(SimulatedAudioHardwareTest, ChangesAreAnnouncedInALaterTurnToEveryListener) {
  const AudioObjectID device = plug();
  listen(device);
  listen(device);
  audio.setInputVolume(device, 0.5F);
  EXPECT_THAT(heard, IsEmpty());
  loop.runUntilIdle();
  EXPECT_THAT(heard, ElementsAre(0.5F, 0.5F));
}

TEST_F(SimulatedAudioHardwareTest, WritesEchoAfterTheDelayAndEqualOnesDoNot) {
  const AudioObjectID device = plug();
  listen(device);
  audio.setAnnouncementDelay(0.02s);
  write(device, 0.5F);
  write(device, 0.5F);
  loop.advance(0.019s);
  EXPECT_THAT(heard, IsEmpty());
  loop.advance(0.001s);
  EXPECT_THAT(heard, ElementsAre(0.5F));
}

TEST_F(SimulatedAudioHardwareTest, ListenerReadsTheValueAtTheTimeOfItsCall) {
  const AudioObjectID device = plug();
  listen(device);
  audio.setInputVolume(device, 0);
  audio.setInputVolume(device, 0.8F);
  loop.runUntilIdle();
  EXPECT_THAT(heard, ElementsAre(0.8F, 0.8F));
}

TEST_F(SimulatedAudioHardwareTest, CallQueuedAtTheRemovalArrivesUnlessSuppressed) {
  const AudioObjectID device = plug();
  auto listener = listen(device);
  audio.setInputVolume(device, 0.5F);
  audio.removePropertyListener(device, audio::inputVolume, std::move(listener));
  loop.runUntilIdle();
  EXPECT_THAT(heard, ElementsAre(0.5F));

  audio.setDeliversAfterRemoval(false);
  listener = listen(device);
  audio.setInputVolume(device, 0.6F);
  audio.removePropertyListener(device, audio::inputVolume, std::move(listener));
  loop.runUntilIdle();
  EXPECT_THAT(heard, ElementsAre(0.5F));
}

TEST_F(SimulatedAudioHardwareTest, RemovalNeedsTheSameObjectAndAddress) {
  const AudioObjectID device = plug();
  const AudioObjectID other = plug("Other");
  auto listener = listen(device);
  const auto copy = [&] { return RegistrationToken(listener.native()); };
  EXPECT_NE(audio.removePropertyListener(other, audio::inputVolume, copy()), 0);
  EXPECT_NE(audio.removePropertyListener(device, audio::runningSomewhere, copy()), 0);
  EXPECT_NE(audio.removePropertyListener(device, audio::inputVolume, RegistrationToken()), 0);
  EXPECT_EQ(audio.listenerCount(), 1U);
  EXPECT_EQ(audio.removePropertyListener(device, audio::inputVolume, copy()), 0);
  EXPECT_EQ(audio.listenerCount(), 0U);
}

TEST_F(SimulatedAudioHardwareTest, IdentifiersAreReusedOnlyOnRequest) {
  const AudioObjectID first = plug();
  audio.unplug(first);
  const AudioObjectID second = plug();
  EXPECT_GT(second, first);
  audio.plugAs(90, {.name = "High"});
  audio.plugAs(first, {.name = "Back again"});
  EXPECT_THAT(audio.deviceList(), ElementsAre(second, 90U, first));
  EXPECT_EQ(plug(), 91U);
}

TEST_F(SimulatedAudioHardwareTest, DevicesKeepTheirPlaceAndCanBeReordered) {
  int announced = 0;
  audio.addPropertyListener(audio::systemObject, audio::deviceList, [&] { ++announced; });
  const AudioObjectID a = plug();
  const AudioObjectID b = audio.plug({.name = "b"}, 0);
  const AudioObjectID c = audio.plug({.name = "c"}, 1);
  EXPECT_THAT(audio.deviceList(), ElementsAre(b, c, a));
  audio.reorder({a, b, c});
  EXPECT_THAT(audio.deviceList(), ElementsAre(a, b, c));
  audio.reorder({a, b, c});
  audio.unplug(b);
  loop.runUntilIdle();
  EXPECT_EQ(announced, 5);
}

TEST_F(SimulatedAudioHardwareTest, UnpluggingRemovesTheDevicesListeners) {
  const AudioObjectID device = plug();
  listen(device);
  audio.addPropertyListener(audio::systemObject, audio::deviceList, [] {});
  audio.unplug(device);
  EXPECT_EQ(audio.listenerCount(), 1U);
}

TEST_F(SimulatedAudioHardwareTest, VolumeIsClampedAndNaNIsRefused) {
  const AudioObjectID device = plug();
  EXPECT_EQ(write(device, 1.5F), 0);
  EXPECT_EQ(audio.inputVolume(device), 1.0F);
  EXPECT_EQ(write(device, -0.5F), 0);
  EXPECT_EQ(audio.inputVolume(device), 0.0F);
  EXPECT_NE(write(device, std::numeric_limits<float>::quiet_NaN()), 0);
  EXPECT_EQ(audio.inputVolume(device), 0.0F);
}

TEST_F(SimulatedAudioHardwareTest, MuteButtonDrivesTheVolumeToZeroAndBack) {
  const AudioObjectID device = plug("Jabra Speak2 75", 0.7F);
  audio.pressMuteButton(device);
  EXPECT_EQ(audio.inputVolume(device), 0.0F);
  audio.pressMuteButton(device);
  EXPECT_EQ(audio.inputVolume(device), 0.7F);
  audio.setInputVolume(device, 0.4F);
  audio.pressMuteButton(device);
  audio.pressMuteButton(device);
  EXPECT_EQ(audio.inputVolume(device), 0.4F);
  const AudioObjectID silent = plug("Silent from the start", 0);
  audio.pressMuteButton(silent);
  EXPECT_EQ(audio.inputVolume(silent), 1.0F);
}

TEST_F(SimulatedAudioHardwareTest, OtherProgramRestoresTheVolumeAfterItsDelay) {
  const AudioObjectID device = plug();
  listen(device);
  audio.setPutsVolumeBackAfter(0.1s);
  audio.pressMuteButton(device);
  loop.advance(0.099s);
  EXPECT_THAT(heard, ElementsAre(0.0F));
  loop.advance(0.001s);
  EXPECT_THAT(heard, ElementsAre(0.0F, 0.8F));
}

TEST_F(SimulatedAudioHardwareTest, OtherProgramLeavesARestoredVolumeOrAnUnpluggedDeviceAlone) {
  const AudioObjectID device = plug();
  audio.setPutsVolumeBackAfter(0.1s);
  audio.setInputVolume(device, 0);
  audio.setInputVolume(device, 0.3F);
  loop.advance(1s);
  EXPECT_EQ(audio.inputVolume(device), 0.3F);
  audio.setInputVolume(device, 0);
  audio.unplug(device);
  loop.advance(1s);
}

TEST_F(SimulatedAudioHardwareTest, RunningIsAnnouncedWhenItChanges) {
  const AudioObjectID device = plug();
  int announced = 0;
  audio.addPropertyListener(device, audio::runningSomewhere, [&] { ++announced; });
  audio.setRunning(device, true);
  audio.setRunning(device, true);
  audio.setRunning(device, false);
  loop.runUntilIdle();
  EXPECT_EQ(announced, 2);
  audio.announce(device, audio::runningSomewhere);
  loop.runUntilIdle();
  EXPECT_EQ(announced, 3);
}

TEST_F(SimulatedAudioHardwareTest, FaultAffectsItsOperationAndObjectForAFixedNumberOfCalls) {
  const AudioObjectID device = plug();
  const AudioObjectID other = plug("Other");
  audio.addFault({.status = -50, .object = device, .times = 2});
  float volume = 0.25F;
  EXPECT_EQ(read(other, volume), 0);
  EXPECT_EQ(write(device, 0.5F), 0);
  volume = 0.25F;
  EXPECT_EQ(read(device, volume), -50);
  EXPECT_EQ(read(device, volume), -50);
  EXPECT_EQ(volume, 0.25F);
  EXPECT_EQ(read(device, volume), 0);
  EXPECT_EQ(volume, 0.5F);
  EXPECT_THAT(journal.take("audio"), testing::Contains("get 2 input volume (4 bytes): -> -50"));
}

TEST_F(SimulatedAudioHardwareTest, FaultMayOnlyDelayTheCall) {
  const AudioObjectID device = plug();
  audio.addFault({.times = 1, .duration = 200ms});
  float volume = 0;
  EXPECT_EQ(read(device, volume), 0);
  EXPECT_EQ(read(device, volume), 0);
  EXPECT_EQ(volume, 0.8F);
  EXPECT_EQ(loop.now().time_since_epoch(), 200ms);
}

TEST_F(SimulatedAudioHardwareTest, FaultCanAffectEveryOperation) {
  const AudioObjectID device = plug();
  for (const AudioOperation operation :
       {AudioOperation::hasProperty, AudioOperation::setPropertyData,
        AudioOperation::addPropertyListener, AudioOperation::removePropertyListener}) {
    audio.addFault({.operation = operation, .status = audio::hardwareNotRunning});
  }
  audio.addFault({.operation = AudioOperation::getPropertyText,
                  .address = audio::deviceName,
                  .status = audio::hardwareNotRunning});
  std::string name = "untouched";
  EXPECT_FALSE(audio.hasProperty(device, audio::inputVolume));
  EXPECT_EQ(write(device, 0), audio::hardwareNotRunning);
  EXPECT_EQ(audio.inputVolume(device), 0.8F);
  EXPECT_FALSE(listen(device));
  EXPECT_EQ(audio.getPropertyText(device, audio::deviceName, name), audio::hardwareNotRunning);
  EXPECT_EQ(name, "untouched");
  EXPECT_EQ(audio.removePropertyListener(device, audio::inputVolume, RegistrationToken()),
            audio::hardwareNotRunning);
  audio.clearFaults();
  EXPECT_TRUE(listen(device));
}

TEST_F(SimulatedAudioHardwareTest, FaultCanReturnAWrongSize) {
  plug();
  audio.addFault({.operation = AudioOperation::getPropertyDataSize,
                  .address = audio::deviceList,
                  .size = 3,
                  .times = 1});
  std::uint32_t size = 0;
  EXPECT_EQ(audio.getPropertyDataSize(audio::systemObject, audio::deviceList, size), 0);
  EXPECT_EQ(size, 3U);
  EXPECT_EQ(audio.getPropertyDataSize(audio::systemObject, audio::deviceList, size), 0);
  EXPECT_EQ(size, 4U);
}

TEST_F(SimulatedAudioHardwareTest, CallOffTheMainThreadIsAViolation) {
  const AudioObjectID device = plug();
  const CaughtViolations caught;
  loop.runInBackground([&] { audio.hasProperty(device, audio::inputVolume); });
  EXPECT_THAT(caught.messages(), ElementsAre(HasSubstr("hasProperty")));
}

TEST_F(SimulatedAudioHardwareTest, ImpossibleDeskIsAViolation) {
  const AudioObjectID device = plug();
  const CaughtViolations caught;
  audio.plugAs(device, {.name = "Twin"});
  audio.plugAs(audio::systemObject, {.name = "System"});
  audio.reorder({device, device});
  EXPECT_EQ(caught.messages().size(), 3U);
  EXPECT_THAT(audio.deviceList(), ElementsAre(device));
}

}  // namespace
}  // namespace hushbox
