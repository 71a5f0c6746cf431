#include <algorithm>
#include <set>

#include "tests/platform/linux/fixtures/PulseAudioFixture.h"

namespace hushbox {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class PulseAudioDevicesTest : public PulseAudioFixture {};

TEST_P(PulseAudioDevicesTest, ListsTheInputDevicesAfterConstruction) {
  start();
  EXPECT_THAT(names(), AllOf(Contains("Jabra Speak2 75").Times(1),
                             Contains("Built-in Microphone").Times(1)));
}

TEST_P(PulseAudioDevicesTest, LeavesOutTheMonitorOfALoudspeaker) {
  start();
  EXPECT_THAT(names(), Each(Not(HasSubstr("Monitor"))));
}

TEST_P(PulseAudioDevicesTest, DeviceHasThreePropertiesAndTheSystemHasTheDeviceList) {
  const AudioObjectID device = start();
  EXPECT_TRUE(hardware_->hasProperty(device, audio::deviceName));
  EXPECT_TRUE(hardware_->hasProperty(device, audio::inputVolume));
  EXPECT_TRUE(hardware_->hasProperty(device, audio::runningSomewhere));
  EXPECT_FALSE(hardware_->hasProperty(device, audio::deviceList));
  EXPECT_TRUE(hardware_->hasProperty(audio::systemObject, audio::deviceList));
  EXPECT_FALSE(hardware_->hasProperty(audio::systemObject, audio::inputVolume));
}

TEST_P(PulseAudioDevicesTest, DeviceThatIsPluggedInAgainGetsANewIdentifier) {
  const AudioObjectID first = start();
  recordLists();
  server_->unplugSpeakerphone();
  eventually([&] { return find("Jabra Speak2 75") == 0; });
  EXPECT_EQ(volumeOf(first), std::nullopt);
  EXPECT_EQ(write(first, 0.5F), audio::badObject);
  ASSERT_FALSE(lists_.empty());
  EXPECT_THAT(lists_.back(), Not(Contains("Jabra Speak2 75")));

  lists_.clear();
  server_->plugSpeakerphone();
  eventually([&] { return find("Jabra Speak2 75") != 0; });
  EXPECT_NE(find("Jabra Speak2 75"), first);
  ASSERT_FALSE(lists_.empty());
  EXPECT_THAT(lists_.back(), Contains("Jabra Speak2 75"));
  EXPECT_EQ(volumeOf(first), std::nullopt);
}

// A session manager restores the volume of a source a moment after it has appeared at full volume.
// That must look like a device that has this volume, not like a press.
TEST_P(PulseAudioDevicesTest, DeviceIsListedWithItsRestoredVolume) {
  start();
  server_->setVolume(0.0);
  settle();
  server_->unplugSpeakerphone();
  eventually([&] { return find("Jabra Speak2 75") == 0; });

  std::optional<float> listedAt;
  hardware_->addPropertyListener(audio::systemObject, audio::deviceList, [&] {
    const AudioObjectID device = find("Jabra Speak2 75");
    if (device == 0 || listedAt) return;
    listedAt = volumeOf(device);
    recordVolumes(device);
  });
  server_->replugSpeakerphone();
  eventually([&] { return listedAt.has_value(); });
  settle();
  EXPECT_EQ(listedAt, static_cast<float>(server_->volume()));
  EXPECT_THAT(volumes_, IsEmpty());
}

TEST_P(PulseAudioDevicesTest, HardwareIsListedBeforeVirtualSources) {
  if (GetParam() == rehearsal::AudioFlavour::PulseAudio) {
    GTEST_SKIP() << "PulseAudio has no source without a device that counts as hardware.";
  }
  start();
  rehearsal::AudioClient client(session_->environment().at("PULSE_SERVER"), "Mixer");
  const auto load = [&](const std::string& name, const std::string& property) {
    return client.loadModule("module-null-sink",
                             "media.class=Audio/Source/Virtual channels=1 sink_name=" + name +
                                 " sink_properties=\"device.description=" + name + " " + property +
                                 "\"");
  };
  // PipeWire 0.3 looks for the one property, 1.4 for the other.
  const std::uint32_t filter = load("Filter", "node.virtual=true");
  eventually([&] { return find("Filter") != 0; });
  const std::uint32_t hardware = load("Hardware", "device.api=alsa");
  eventually([&] { return find("Hardware") != 0; });
  const auto list = devices();
  EXPECT_LT(std::ranges::find(list, find("Hardware")), std::ranges::find(list, find("Filter")));
  client.unloadModule(hardware);
  client.unloadModule(filter);
}

TEST_P(PulseAudioDevicesTest, DeviceKeepsItsIdentifierWhileOthersArePluggedInAndOut) {
  const AudioObjectID device = start();
  server_->plug("alsa_input.usb-other", "Another Microphone");
  eventually([&] { return find("Another Microphone") != 0; });
  EXPECT_EQ(find("Jabra Speak2 75"), device);
  server_->unplug("alsa_input.usb-other");
  eventually([&] { return find("Another Microphone") == 0; });
  EXPECT_EQ(find("Jabra Speak2 75"), device);
}

TEST_P(PulseAudioDevicesTest, VolumesAndStreamsDoNotAnnounceTheDeviceList) {
  const AudioObjectID device = start();
  recordLists();
  server_->setVolume(0.25);
  eventually([&] { return volumeOf(device) == 0.25F; });
  const auto stream = server_->record();
  eventually([&] { return isRunning(device) == true; });
  settle();
  EXPECT_THAT(lists_, IsEmpty());
}

TEST_P(PulseAudioDevicesTest, TwoHeadsetsWithTheSameNameAreTwoDevices) {
  const AudioObjectID first = start();
  server_->plug("alsa_input.usb-Jabra_Speak2_75.2", "Jabra Speak2 75");
  eventually([&] { return std::ranges::count(names(), "Jabra Speak2 75") == 2; });
  server_->setVolume(0.5);
  eventually([&] { return volumeOf(first) == 0.5F; });
  for (const AudioObjectID device : devices()) {
    if (device != first) {
      EXPECT_EQ(volumeOf(device), 1.0F) << nameOf(device);
    }
  }
  server_->unplug("alsa_input.usb-Jabra_Speak2_75.2");
}

TEST_P(PulseAudioDevicesTest, HundredPlugCyclesUseAHundredIdentifiersAndLeakNothing) {
  start();
  server_->unplugSpeakerphone();
  eventually([&] { return find("Jabra Speak2 75") == 0; });
  const auto before = devices();
  const auto held = std::make_shared<int>();
  std::set<AudioObjectID> seen;
  for (int cycle = 0; cycle < 100; ++cycle) {
    server_->plugSpeakerphone();
    eventually([&] { return find("Jabra Speak2 75") != 0; });
    const AudioObjectID device = find("Jabra Speak2 75");
    seen.insert(device);
    hardware_->addPropertyListener(device, audio::inputVolume, [held] {});
    server_->unplugSpeakerphone();
    eventually([&] { return find("Jabra Speak2 75") == 0; });
  }
  EXPECT_EQ(seen.size(), 100U);
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_EQ(devices(), before);
}

TEST_P(PulseAudioDevicesTest, DeviceListListenerMayDestroyTheAdapter) {
  start();
  hardware_->addPropertyListener(audio::systemObject, audio::deviceList,
                                 [this] { hardware_.reset(); });
  server_->unplugSpeakerphone();
  eventually([&] { return hardware_ == nullptr; });
  settle();
}

TEST_P(PulseAudioDevicesTest, CanBeDestroyedWithListenersInPlace) {
  recordVolumes(start());
  recordLists();
  hardware_.reset();
  server_->setVolume(0.5);
  server_->unplugSpeakerphone();
  settle();
  EXPECT_THAT(volumes_, IsEmpty());
  EXPECT_THAT(lists_, IsEmpty());
}

TEST_P(PulseAudioDevicesTest, TwoAdaptersShareNoIdentifier) {
  const auto first = (start(), devices());
  const auto another = std::move(hardware_);
  start();
  for (const AudioObjectID device : devices()) EXPECT_THAT(first, Not(Contains(device)));
}

HUSHBOX_ON_BOTH_AUDIO_SERVERS(PulseAudioDevicesTest);

}  // namespace
}  // namespace hushbox
