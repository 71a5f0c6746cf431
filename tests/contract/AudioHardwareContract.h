#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/contract/AudioHardwareDriver.h"
#include "tests/contract/Contract.h"

namespace hushbox {

class AudioHardwareContract : public Contract<AudioHardwareDriver> {
 protected:
  static constexpr const char* speakerphone = AudioHardwareDriver::speakerphone;
  /// A server rounds volumes to its own scale.
  static constexpr float tolerance = 0.001F;

  AudioHardware& hardware() { return driver().hardware(); }

  std::vector<AudioObjectID> devices() {
    std::uint32_t size = 0;
    EXPECT_EQ(hardware().getPropertyDataSize(audio::systemObject, audio::deviceList, size), 0);
    EXPECT_EQ(size % sizeof(AudioObjectID), 0U);
    std::vector<AudioObjectID> list(size / sizeof(AudioObjectID));
    EXPECT_EQ(hardware().getPropertyData(audio::systemObject, audio::deviceList, size, list.data()),
              0);
    list.resize(size / sizeof(AudioObjectID));
    return list;
  }

  std::optional<std::string> nameOf(AudioObjectID device) {
    std::string name;
    if (hardware().getPropertyText(device, audio::deviceName, name) != 0) return std::nullopt;
    return name;
  }

  /// Returns the device with that name, or 0.
  AudioObjectID find(const std::string& name) {
    for (const AudioObjectID device : devices()) {
      if (nameOf(device) == name) return device;
    }
    return 0;
  }

  /// Plugs a device in and waits until it is listed.
  AudioObjectID plug(const std::string& name = speakerphone) {
    driver().plug(name);
    EXPECT_TRUE(driver().waitFor([&] { return find(name) != 0; }));
    return find(name);
  }

  void unplug(const std::string& name = speakerphone) {
    driver().unplug(name);
    EXPECT_TRUE(driver().waitFor([&] { return find(name) == 0; }));
  }

  std::optional<float> volume(AudioObjectID device) {
    float value = -1;
    std::uint32_t size = sizeof value;
    if (hardware().getPropertyData(device, audio::inputVolume, size, &value) != 0) {
      return std::nullopt;
    }
    EXPECT_EQ(size, sizeof value);
    return value;
  }

  AudioStatus setVolume(AudioObjectID device, float value) {
    return hardware().setPropertyData(device, audio::inputVolume, sizeof value, &value);
  }

  std::optional<bool> running(AudioObjectID device) {
    std::uint32_t value = 0;
    std::uint32_t size = sizeof value;
    if (hardware().getPropertyData(device, audio::runningSomewhere, size, &value) != 0) {
      return std::nullopt;
    }
    return value != 0;
  }

  bool waitForVolume(AudioObjectID device, float value) {
    return driver().waitFor([&] {
      const auto now = volume(device);
      return now && std::abs(*now - value) <= tolerance;
    });
  }

  /// Adds a listener and returns the count of its calls. The listener is never removed.
  std::shared_ptr<int> listen(AudioObjectID object, const AudioPropertyAddress& address) {
    auto calls = std::make_shared<int>(0);
    const auto listener = hardware().addPropertyListener(object, address, [this, calls] {
      EXPECT_TRUE(driver().isMainThread());
      ++*calls;
    });
    EXPECT_TRUE(listener);
    return calls;
  }
};

TEST_P(AudioHardwareContract, ListsAPluggedInDeviceUnderItsName) {
  EXPECT_EQ(find(speakerphone), 0U);
  const AudioObjectID device = plug();
  EXPECT_NE(device, audio::systemObject);
  EXPECT_EQ(nameOf(device), speakerphone);
}

TEST_P(AudioHardwareContract, AnnouncesPluggingAndUnpluggingOnTheSystemObject) {
  const auto calls = listen(audio::systemObject, audio::deviceList);
  plug();
  EXPECT_TRUE(driver().waitFor([&] { return *calls >= 1; }));
  const int before = *calls;
  unplug();
  EXPECT_TRUE(driver().waitFor([&] { return *calls > before; }));
}

TEST_P(AudioHardwareContract, UnpluggedDeviceHasNoProperties) {
  const AudioObjectID device = plug();
  unplug();
  EXPECT_FALSE(hardware().hasProperty(device, audio::inputVolume));
  EXPECT_EQ(nameOf(device), std::nullopt);
  EXPECT_EQ(volume(device), std::nullopt);
  EXPECT_EQ(running(device), std::nullopt);
  EXPECT_NE(setVolume(device, 0.5F), 0);
  EXPECT_FALSE(hardware().addPropertyListener(device, audio::inputVolume, [] {}));
}

TEST_P(AudioHardwareContract, DeviceThatIsPluggedInAgainGetsANewIdentifier) {
  const AudioObjectID first = plug();
  unplug();
  const AudioObjectID second = plug();
  EXPECT_NE(second, 0U);
  EXPECT_NE(first, second);
}

TEST_P(AudioHardwareContract, DevicesKeepTheirOrderInTheList) {
  const AudioObjectID first = plug("First microphone");
  const AudioObjectID second = plug("Second microphone");
  const auto list = devices();
  const auto firstAt = std::find(list.begin(), list.end(), first);
  EXPECT_NE(std::find(firstAt, list.end(), second), list.end());
  EXPECT_EQ(devices(), list);
}

TEST_P(AudioHardwareContract, TruncatesTheDeviceListToTheBuffer) {
  plug("First microphone");
  plug("Second microphone");
  const auto list = devices();
  AudioObjectID first = 0;
  std::uint32_t size = sizeof first;
  EXPECT_EQ(hardware().getPropertyData(audio::systemObject, audio::deviceList, size, &first), 0);
  EXPECT_EQ(size, sizeof first);
  EXPECT_EQ(first, list[0]);
}

TEST_P(AudioHardwareContract, DeviceHasExactlyThreeProperties) {
  const AudioObjectID device = plug();
  EXPECT_TRUE(hardware().hasProperty(device, audio::deviceName));
  EXPECT_TRUE(hardware().hasProperty(device, audio::inputVolume));
  EXPECT_TRUE(hardware().hasProperty(device, audio::runningSomewhere));
  EXPECT_FALSE(hardware().hasProperty(device, audio::deviceList));
  EXPECT_FALSE(hardware().hasProperty(audio::systemObject, audio::inputVolume));
  EXPECT_TRUE(hardware().hasProperty(audio::systemObject, audio::deviceList));
}

TEST_P(AudioHardwareContract, UnknownObjectHasNoProperties) {
  const AudioObjectID unknown = 0x7FFFFFF0;
  std::uint32_t size = 0;
  EXPECT_FALSE(hardware().hasProperty(unknown, audio::inputVolume));
  EXPECT_NE(hardware().getPropertyDataSize(unknown, audio::inputVolume, size), 0);
  EXPECT_EQ(volume(unknown), std::nullopt);
  EXPECT_EQ(nameOf(unknown), std::nullopt);
}

TEST_P(AudioHardwareContract, ScalarsAreFourBytesAndFailInASmallerBuffer) {
  const AudioObjectID device = plug();
  std::uint32_t size = 0;
  EXPECT_EQ(hardware().getPropertyDataSize(device, audio::inputVolume, size), 0);
  EXPECT_EQ(size, 4U);
  EXPECT_EQ(hardware().getPropertyDataSize(device, audio::runningSomewhere, size), 0);
  EXPECT_EQ(size, 4U);
  float value = 0;
  size = 2;
  EXPECT_NE(hardware().getPropertyData(device, audio::inputVolume, size, &value), 0);
  EXPECT_NE(hardware().setPropertyData(device, audio::inputVolume, 2, &value), 0);
}

TEST_P(AudioHardwareContract, ReadsAndAnnouncesAVolumeSetByAnotherProgram) {
  const AudioObjectID device = plug();
  const auto calls = listen(device, audio::inputVolume);
  driver().writeVolume(0.25F);
  EXPECT_TRUE(waitForVolume(device, 0.25F));
  EXPECT_TRUE(driver().waitFor([&] { return *calls >= 1; }));
}

TEST_P(AudioHardwareContract, ListenerReadsEachVolumeInTheOrderOfTheChanges) {
  const AudioObjectID device = plug();
  std::vector<float> reads;
  hardware().addPropertyListener(device, audio::inputVolume,
                                 [&] { reads.push_back(volume(device).value_or(-1)); });
  for (const float value : {0.25F, 0.0F, 0.5F, 0.0F, 0.75F}) {
    driver().writeVolume(value);
    driver().letPass(TimeInterval(0.1));
  }
  EXPECT_TRUE(driver().waitFor([&] { return reads.size() >= 5; }));
  EXPECT_THAT(reads, testing::ElementsAre(testing::FloatNear(0.25F, tolerance), 0.0F,
                                          testing::FloatNear(0.5F, tolerance), 0.0F,
                                          testing::FloatNear(0.75F, tolerance)));
}

TEST_P(AudioHardwareContract, SeesEachDropThatIsRestoredShortlyAfterwards) {
  const AudioObjectID device = plug();
  // As in a call. A platform may tell a drop from its traces only while something records.
  driver().startRecording();
  ASSERT_TRUE(driver().waitFor([&] { return running(device) == true; }));
  driver().letPass(TimeInterval(0.3));
  int drops = 0;
  int returns = 0;
  hardware().addPropertyListener(device, audio::inputVolume,
                                 [&] { ++(volume(device) == 0.0F ? drops : returns); });
  for (int drop = 0; drop < 20; ++drop) {
    driver().writeVolume(0);
    driver().letPass(TimeInterval(0.005));
    driver().writeVolume(1);
    // Whatever the adapter still has to ask about this drop comes before the next.
    driver().waitFor([&] { return returns > drop; }, TimeInterval(1));
  }
  EXPECT_EQ(drops, 20);
  EXPECT_EQ(returns, 20);
}

TEST_P(AudioHardwareContract, OnlyVolumeZeroIsReadAsExactlyZero) {
  const AudioObjectID device = plug();
  driver().writeVolume(0);
  EXPECT_TRUE(driver().waitFor([&] { return volume(device) == 0.0F; }));
  driver().writeVolume(0.01F);
  EXPECT_TRUE(driver().waitFor([&] { return volume(device).value_or(0) > 0.0F; }));
}

TEST_P(AudioHardwareContract, AnnouncesItsOwnWriteLater) {
  const AudioObjectID device = plug();
  const auto calls = listen(device, audio::inputVolume);
  EXPECT_EQ(setVolume(device, 0.5F), 0);
  EXPECT_EQ(*calls, 0);
  EXPECT_TRUE(driver().waitFor([&] { return *calls >= 1; }));
  EXPECT_TRUE(waitForVolume(device, 0.5F));
}

TEST_P(AudioHardwareContract, DoesNotAnnounceAWriteOfThePresentVolume) {
  const AudioObjectID device = plug();
  driver().writeVolume(0.5F);
  ASSERT_TRUE(waitForVolume(device, 0.5F));
  driver().letPass(TimeInterval(0.2));
  const auto calls = listen(device, audio::inputVolume);
  EXPECT_EQ(setVolume(device, *volume(device)), 0);
  driver().writeVolume(0.5F);
  driver().letPass(TimeInterval(0.3));
  EXPECT_EQ(*calls, 0);
}

TEST_P(AudioHardwareContract, ClampsTheVolumeToTheRangeFromZeroToOne) {
  const AudioObjectID device = plug();
  EXPECT_EQ(setVolume(device, -1.0F), 0);
  EXPECT_TRUE(driver().waitFor([&] { return volume(device) == 0.0F; }));
  EXPECT_EQ(setVolume(device, 7.0F), 0);
  EXPECT_TRUE(waitForVolume(device, 1.0F));
}

TEST_P(AudioHardwareContract, AnnouncesTheStartAndTheEndOfARecording) {
  const AudioObjectID device = plug();
  EXPECT_EQ(running(device), false);
  const auto calls = listen(device, audio::runningSomewhere);
  driver().startRecording();
  EXPECT_TRUE(driver().waitFor([&] { return running(device) == true && *calls >= 1; }));
  const int before = *calls;
  driver().stopRecording();
  EXPECT_TRUE(driver().waitFor([&] { return running(device) == false && *calls > before; }));
}

TEST_P(AudioHardwareContract, CallsListenersOfTheChangedPropertyOnly) {
  const AudioObjectID device = plug();
  const AudioObjectID other = plug("Other microphone");
  const auto ofOther = listen(other, audio::inputVolume);
  const auto ofRunning = listen(device, audio::runningSomewhere);
  const auto ofVolume = listen(device, audio::inputVolume);
  driver().writeVolume(0.3F);
  EXPECT_TRUE(driver().waitFor([&] { return *ofVolume >= 1; }));
  driver().letPass(TimeInterval(0.2));
  EXPECT_EQ(*ofOther, 0);
  EXPECT_EQ(*ofRunning, 0);
}

TEST_P(AudioHardwareContract, RemovingAListenerLeavesTheOthersInPlace) {
  const AudioObjectID device = plug();
  int removedCalls = 0;
  auto removed =
      hardware().addPropertyListener(device, audio::inputVolume, [&] { ++removedCalls; });
  const auto kept = listen(device, audio::inputVolume);
  EXPECT_EQ(hardware().removePropertyListener(device, audio::inputVolume, std::move(removed)), 0);
  driver().letPass(TimeInterval(0.1));
  driver().writeVolume(0.3F);
  EXPECT_TRUE(driver().waitFor([&] { return *kept >= 1; }));
  EXPECT_EQ(removedCalls, 0);
}

TEST_P(AudioHardwareContract, DestroyingTheTokenKeepsTheListener) {
  const AudioObjectID device = plug();
  int calls = 0;
  {
    const auto dropped =
        hardware().addPropertyListener(device, audio::inputVolume, [&] { ++calls; });
  }
  driver().writeVolume(0.3F);
  EXPECT_TRUE(driver().waitFor([&] { return calls >= 1; }));
}

TEST_P(AudioHardwareContract, ListenerMayRemoveItselfAndAddAnother) {
  const AudioObjectID device = plug();
  int firstCalls = 0;
  int secondCalls = 0;
  RegistrationToken first;
  first = hardware().addPropertyListener(device, audio::inputVolume, [&] {
    if (++firstCalls > 1) return;
    hardware().removePropertyListener(device, audio::inputVolume, std::move(first));
    hardware().addPropertyListener(device, audio::inputVolume, [&] { ++secondCalls; });
  });
  driver().writeVolume(0.3F);
  ASSERT_TRUE(driver().waitFor([&] { return firstCalls >= 1; }));
  driver().letPass(TimeInterval(0.2));
  driver().writeVolume(0.6F);
  EXPECT_TRUE(driver().waitFor([&] { return secondCalls >= 1; }));
}

}  // namespace hushbox
