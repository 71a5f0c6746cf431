#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <vector>

#include "coordinator/MuteCoordinator.h"
#include "platform/simulated/SimulatedDesk.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;

/// Runs step `number` of a short history. At some step each of these is in progress: a bounce
/// window, an echo, a battery reading, a permission request, a polling pause.
void step(SimulatedDesk& desk, AudioObjectID speakerphone, int number) {
  const std::vector<std::function<void()>> steps = {
      [&] { desk.audio.setInputVolume(speakerphone, 0); },
      [&] { desk.audio.setInputVolume(speakerphone, 0.8F); },
      [&] { desk.teams.joinMeeting(false); },
      [&] { desk.audio.setRunning(speakerphone, true); },
      [&] { desk.audio.setInputVolume(speakerphone, 0); },
      [&] { desk.teams.setMuted(false); },
      [&] { desk.teams.leaveMeeting(); },
      [&] { desk.teams.joinMeeting(true); },
      [&] { desk.audio.setRunning(speakerphone, false); },
      [&] { desk.audio.setRunning(speakerphone, true); },
  };
  // Two of three steps only let time pass.
  const int event = number / 3;
  if (number % 3 == 0 && event < static_cast<int>(steps.size())) steps[event]();
  desk.advance(110ms);
}

TEST(MuteCoordinatorDestructionTest, IsSafeAtAnyMoment) {
  const std::size_t subscribers = ChangePublisher::subscriberCount();
  for (const TimeInterval latency : {TimeInterval(0s), TimeInterval(150ms), TimeInterval(5s)}) {
    for (int end = 0; end < 60; ++end) {
      SimulatedDesk desk;
      desk.setBattery(12);
      desk.loop.setUtilityLatency(latency);
      desk.notifications.setAnswers(SimulatedUserNotifications::Answers::later, latency);
      const AudioObjectID speakerphone = desk.plugSpeakerphone();
      auto coordinator = std::make_unique<MuteCoordinator>();
      for (int number = 0; number < end; ++number) step(desk, speakerphone, number);
      coordinator.reset();
      // A battery reading in progress finishes, but has no subscriber.
      EXPECT_EQ(ChangePublisher::subscriberCount(), subscribers) << end;
      const std::size_t requests = desk.notifications.requests().size();
      desk.journal.take();
      for (int number = end; number < 60; ++number) step(desk, speakerphone, number);
      desk.advance(120s);
      EXPECT_EQ(desk.notifications.requests().size(), requests) << end;
      EXPECT_THAT(desk.journal.take("audio"), IsEmpty()) << end;
      EXPECT_THAT(desk.journal.take("accessibility"), IsEmpty()) << end;
    }
  }
}

}  // namespace
}  // namespace hushbox
