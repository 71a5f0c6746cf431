#include "platform/macos/CoreAudioHardware.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/macos/RunLoopMainLoop.h"
#include "tests/platform/macos/MacFixture.h"

namespace hushbox {
namespace {

class CoreAudioHardwareTest : public MacFixture {
 protected:
  std::string nameOf(AudioObjectID device) {
    std::string name = "untouched";
    EXPECT_EQ(hardware.getPropertyText(device, audio::deviceName, name), audio::noError);
    return name;
  }

  RegistrationToken listen(AudioObjectID object, const AudioPropertyAddress& address) {
    return hardware.addPropertyListener(object, address, [this] {
      EXPECT_TRUE(doubles::isMainThread());
      ++calls;
    });
  }

  CoreAudioHardware hardware;
  int calls = 0;
};

TEST_F(CoreAudioHardwareTest, PassesOnSelectorScopeAndElement) {
  const AudioObjectID device = doubles::plug({.name = "Jabra Speak2 75"});
  EXPECT_TRUE(hardware.hasProperty(device, audio::inputVolume));
  for (const AudioPropertyAddress wrong :
       {AudioPropertyAddress{audio::inputVolume.selector, audio::scopeGlobal, 0},
        AudioPropertyAddress{audio::inputVolume.selector, audio::scopeInput, 1},
        AudioPropertyAddress{audio::deviceName.selector, audio::scopeInput, 0}}) {
    EXPECT_FALSE(hardware.hasProperty(device, wrong));
    std::uint32_t size = 7;
    EXPECT_EQ(hardware.getPropertyDataSize(device, wrong, size), audio::unknownProperty);
    float value = 0.5F;
    size = sizeof value;
    EXPECT_EQ(hardware.getPropertyData(device, wrong, size, &value), audio::unknownProperty);
    EXPECT_EQ(hardware.setPropertyData(device, wrong, size, &value), audio::unknownProperty);
    std::string text;
    EXPECT_EQ(hardware.getPropertyText(device, wrong, text), audio::unknownProperty);
    EXPECT_FALSE(listen(device, wrong));
  }
}

TEST_F(CoreAudioHardwareTest, PassesSizesInBothDirections) {
  const AudioObjectID first = doubles::plug({.name = "First"});
  const AudioObjectID second = doubles::plug({.name = "Second"});
  std::uint32_t size = 0;
  EXPECT_EQ(hardware.getPropertyDataSize(audio::systemObject, audio::deviceList, size), 0);
  EXPECT_EQ(size, 8U);
  std::vector<AudioObjectID> devices(3);
  size = 12;
  EXPECT_EQ(hardware.getPropertyData(audio::systemObject, audio::deviceList, size, devices.data()),
            0);
  EXPECT_EQ(size, 8U);
  EXPECT_EQ(devices, (std::vector<AudioObjectID>{first, second, 0}));
}

TEST_F(CoreAudioHardwareTest, ReadsAnEmptyListIntoANullPointer) {
  std::uint32_t size = 0;
  EXPECT_EQ(hardware.getPropertyData(audio::systemObject, audio::deviceList, size, nullptr), 0);
  EXPECT_EQ(size, 0U);
}

TEST_F(CoreAudioHardwareTest, WritesTheWholeVolume) {
  const AudioObjectID device = doubles::plug({.name = "Jabra"});
  float volume = 0.375F;
  EXPECT_EQ(hardware.setPropertyData(device, audio::inputVolume, sizeof volume, &volume), 0);
  EXPECT_EQ(doubles::device(device).inputVolume, 0.375F);
  EXPECT_EQ(hardware.setPropertyData(device, audio::inputVolume, 2, &volume),
            audio::badPropertySize);
}

TEST_F(CoreAudioHardwareTest, ReturnsTheStatusOfEveryCall) {
  const AudioObjectID device = doubles::plug({.name = "Jabra"});
  for (const AudioStatus status : {audio::hardwareNotRunning, AudioStatus{-50}}) {
    std::uint32_t size = 4;
    float value = 0.5F;
    doubles::failNextAudioCall(status);
    EXPECT_EQ(hardware.getPropertyDataSize(device, audio::inputVolume, size), status);
    doubles::failNextAudioCall(status);
    EXPECT_EQ(hardware.getPropertyData(device, audio::inputVolume, size, &value), status);
    doubles::failNextAudioCall(status);
    EXPECT_EQ(hardware.setPropertyData(device, audio::inputVolume, size, &value), status);
    doubles::failNextAudioCall(status);
    std::string name = "untouched";
    EXPECT_EQ(hardware.getPropertyText(device, audio::deviceName, name), status);
    EXPECT_EQ(name, "untouched");
    doubles::failNextAudioCall(status);
    EXPECT_FALSE(listen(device, audio::inputVolume));
    auto listener = listen(device, audio::inputVolume);
    doubles::failNextAudioCall(status);
    EXPECT_EQ(hardware.removePropertyListener(device, audio::inputVolume, std::move(listener)),
              status);
  }
}

TEST_F(CoreAudioHardwareTest, RefusesANameOfAnotherSize) {
  const AudioObjectID device =
      doubles::plug({.name = "Jabra", .kind = doubles::AudioDevice::Name::half});
  std::string name = "untouched";
  EXPECT_EQ(hardware.getPropertyText(device, audio::deviceName, name), audio::badPropertySize);
  EXPECT_EQ(name, "untouched");
}

TEST_F(CoreAudioHardwareTest, NameIsReadAsUtf8) {
  EXPECT_EQ(nameOf(doubles::plug({.name = "Müllers Jabra 🎙"})), "Müllers Jabra 🎙");
  EXPECT_EQ(nameOf(doubles::plug({.name = ""})), "");
}

TEST_F(CoreAudioHardwareTest, AbsentNameOrNonStringIsAFailure) {
  using Name = doubles::AudioDevice::Name;
  for (const Name kind : {Name::absent, Name::number}) {
    const AudioObjectID device = doubles::plug({.name = "Jabra", .kind = kind});
    std::string name;
    EXPECT_EQ(hardware.getPropertyText(device, audio::deviceName, name), audio::unknownProperty);
  }
}

TEST_F(CoreAudioHardwareTest, ReleasesEveryNameThatItReads) {
  using Name = doubles::AudioDevice::Name;
  std::string name;
  for (const Name kind : {Name::text, Name::number, Name::absent}) {
    const AudioObjectID device =
        doubles::plug({.name = "A name too long to be kept in a pointer", .kind = kind});
    const auto read = [&] {
      const doubles::AutoreleasePool pool;
      hardware.getPropertyText(device, audio::deviceName, name);
    };
    read();
    const long before = doubles::liveObjects();
    for (int i = 0; i < 10; ++i) read();
    EXPECT_EQ(doubles::liveObjects(), before);
  }
}

TEST_F(CoreAudioHardwareTest, ListenerIsCalledLaterOnTheMainQueue) {
  const AudioObjectID device = doubles::plug({.name = "Jabra"});
  const auto listener = listen(device, audio::inputVolume);
  ASSERT_TRUE(listener);
  doubles::setInputVolume(device, 0);
  EXPECT_EQ(calls, 0);
  settle();
  EXPECT_EQ(calls, 1);
  doubles::setRunning(device, true);
  settle();
  EXPECT_EQ(calls, 1);
}

TEST_F(CoreAudioHardwareTest, ListenerRunsBeforeWhatIsQueuedAfterTheChange) {
  const AudioObjectID device = doubles::plug({.name = "Jabra"});
  const auto listener = listen(device, audio::inputVolume);
  doubles::setInputVolume(device, 0);
  RunLoopMainLoop().mainAsync([this] { EXPECT_EQ(calls, 1); });
  settle();
}

TEST_F(CoreAudioHardwareTest, RemovesOneListenerAndKeepsTheOther) {
  const AudioObjectID device = doubles::plug({.name = "Jabra"});
  auto removed = listen(device, audio::inputVolume);
  int keptCalls = 0;
  const auto kept = hardware.addPropertyListener(device, audio::inputVolume, [&] { ++keptCalls; });
  EXPECT_EQ(hardware.removePropertyListener(device, audio::inputVolume, std::move(removed)), 0);
  EXPECT_EQ(doubles::audioListeners(), 1U);
  doubles::setInputVolume(device, 0);
  settle();
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(keptCalls, 1);
}

TEST_F(CoreAudioHardwareTest, CallQueuedBeforeTheRemovalIsHarmless) {
  const AudioObjectID device = doubles::plug({.name = "Jabra"});
  const auto held = std::make_shared<int>(0);
  {
    const doubles::AutoreleasePool pool;
    auto listener = hardware.addPropertyListener(device, audio::inputVolume, [held] { ++*held; });
    doubles::setInputVolume(device, 0);
    EXPECT_EQ(hardware.removePropertyListener(device, audio::inputVolume, std::move(listener)), 0);
    settle();
    EXPECT_LE(*held, 1);
    doubles::setInputVolume(device, 1);
    settle();
    EXPECT_LE(*held, 1);
  }
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(CoreAudioHardwareTest, ListenerLivesUntilItsRemoval) {
  const AudioObjectID device = doubles::plug({.name = "Jabra"});
  const auto held = std::make_shared<int>(0);
  const long before = doubles::liveObjects();
  RegistrationToken listener;
  {
    const doubles::AutoreleasePool pool;
    listener = hardware.addPropertyListener(device, audio::inputVolume, [held] { ++*held; });
  }
  EXPECT_GT(held.use_count(), 1);
  hardware.removePropertyListener(device, audio::inputVolume, std::move(listener));
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_EQ(doubles::liveObjects(), before);
}

TEST_F(CoreAudioHardwareTest, ListenerOutlivesItsTokenAndTheHardware) {
  const AudioObjectID device = doubles::plug({.name = "Jabra"});
  {
    CoreAudioHardware gone;
    gone.addPropertyListener(device, audio::inputVolume, [this] { ++calls; });
  }
  doubles::setInputVolume(device, 0);
  settle();
  EXPECT_EQ(calls, 1);
}

TEST_F(CoreAudioHardwareTest, ListenerMayRemoveItselfAndStillUseItsCaptures) {
  const AudioObjectID device = doubles::plug({.name = "Jabra"});
  RegistrationToken listener;
  {
    const doubles::AutoreleasePool pool;
    listener = hardware.addPropertyListener(
        device, audio::inputVolume, [this, &listener, device, held = std::make_shared<int>()] {
          // Locals, so that this test reads no captures that were destroyed.
          RegistrationToken& token = listener;
          int& count = calls;
          const std::weak_ptr<int> captures = held;
          EXPECT_EQ(hardware.removePropertyListener(device, audio::inputVolume, std::move(token)),
                    0);
          token = {};
          EXPECT_FALSE(captures.expired());
          ++count;
        });
  }
  doubles::setInputVolume(device, 0);
  settle();
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(doubles::audioListeners(), 0U);
}

TEST_F(CoreAudioHardwareTest, RefusesAnEmptyTokenWithoutACall) {
  const AudioObjectID device = doubles::plug({.name = "Jabra"});
  EXPECT_NE(hardware.removePropertyListener(device, audio::inputVolume, {}), 0);
}

}  // namespace
}  // namespace hushbox
