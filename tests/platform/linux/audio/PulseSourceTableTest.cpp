#include "platform/linux/audio/PulseSourceTable.h"

#include <gmock/gmock.h>
#include <pulse/proplist.h>

#include <functional>
#include <memory>
#include <set>
#include <vector>

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr AudioProperty listChange{audio::systemObject, audio::deviceList};
constexpr const char* usbName = "alsa_input.usb-Jabra_Speak2_75";

pa_cvolume volumeOf(std::initializer_list<pa_volume_t> channels) {
  pa_cvolume volume{};
  for (const pa_volume_t channel : channels) volume.values[volume.channels++] = channel;
  return volume;
}

pa_source_info sourceInfo(std::uint32_t index, const char* name, const char* description) {
  pa_source_info info{};
  info.index = index;
  info.name = name;
  info.description = description;
  info.monitor_of_sink = PA_INVALID_INDEX;
  info.volume = volumeOf({PA_VOLUME_NORM});
  return info;
}

pa_source_output_info streamInfo(std::uint32_t index, std::uint32_t source) {
  pa_source_output_info info{};
  info.index = index;
  info.source = source;
  info.name = "Meeting";
  return info;
}

/// A stream whose client names its process with that text.
PulseStreamReport streamOf(const char* process, std::uint32_t index, std::uint32_t source) {
  pa_source_output_info info = streamInfo(index, source);
  info.proplist = pa_proplist_new();
  pa_proplist_sets(info.proplist, PA_PROP_APPLICATION_PROCESS_ID, process);
  const PulseStreamReport report(info);
  pa_proplist_free(info.proplist);
  return report;
}

class PulseSourceTableTest : public testing::Test {
 protected:
  const PulseSourceTable::Source& only() const {
    EXPECT_THAT(table_.sources(), SizeIs(1));
    return table_.sources().front();
  }
  void plug() { table_.setSource(info_); }

  PulseSourceTable table_;
  pa_source_info info_ = sourceInfo(7, usbName, "Jabra Speak2 75");
};

TEST_F(PulseSourceTableTest, SourceIsADeviceNamedByItsDescription) {
  EXPECT_THAT(table_.setSource(info_), ElementsAre(listChange));
  EXPECT_EQ(only().name, "Jabra Speak2 75");
  EXPECT_EQ(table_.find(only().id), &only());
  EXPECT_EQ(table_.find(audio::systemObject), nullptr);
}

TEST_F(PulseSourceTableTest, MonitorOfASinkIsNotADevice) {
  info_.monitor_of_sink = 0;
  EXPECT_THAT(table_.setSource(info_), IsEmpty());
  EXPECT_THAT(table_.sources(), IsEmpty());
}

TEST_F(PulseSourceTableTest, SourceWithoutChannelsIsNotADeviceYet) {
  info_.volume = volumeOf({});
  EXPECT_THAT(table_.setSource(info_), IsEmpty());
  EXPECT_THAT(table_.sources(), IsEmpty());

  info_.volume = volumeOf({PA_VOLUME_NORM});
  plug();
  info_.volume = volumeOf({});
  EXPECT_THAT(table_.setSource(info_), IsEmpty());
  EXPECT_EQ(only().inputVolume(), 1.0F);
}

TEST_F(PulseSourceTableTest, ListKeepsTheOrderOfTheReports) {
  const auto second = sourceInfo(3, "alsa_input.pci", "Built-in");
  plug();
  table_.setSource(second);
  info_.mute = 1;
  plug();
  ASSERT_THAT(table_.sources(), SizeIs(2));
  EXPECT_EQ(table_.sources()[0].name, "Jabra Speak2 75");
  EXPECT_EQ(table_.sources()[1].name, "Built-in");
}

TEST_F(PulseSourceTableTest, IdentifierIsNeverHandedOutTwice) {
  std::set<AudioObjectID> seen;
  for (int cycle = 0; cycle < 1000; ++cycle) {
    plug();
    EXPECT_GT(only().id, audio::systemObject);
    EXPECT_TRUE(seen.insert(only().id).second);
    EXPECT_THAT(table_.removeSource(info_.index), ElementsAre(listChange));
  }
  PulseSourceTable another;
  another.setSource(info_);
  EXPECT_FALSE(seen.contains(another.sources().front().id));
}

TEST_F(PulseSourceTableTest, SourceKeepsItsIdentifierWhateverChangesAboutIt) {
  plug();
  const AudioObjectID id = only().id;
  info_.description = "Speakerphone";
  info_.volume = volumeOf({0});
  info_.mute = 1;
  EXPECT_THAT(table_.setSource(info_), ElementsAre(AudioProperty{id, audio::deviceName}, listChange,
                                                   AudioProperty{id, audio::inputVolume}));
  EXPECT_EQ(only().id, id);
  EXPECT_EQ(only().name, "Speakerphone");
}

TEST_F(PulseSourceTableTest, AnotherNameUnderTheSameIndexIsAnotherDevice) {
  plug();
  const AudioObjectID id = only().id;
  info_.name = "alsa_input.pci";
  EXPECT_THAT(table_.setSource(info_), ElementsAre(listChange));
  EXPECT_NE(only().id, id);
}

TEST_F(PulseSourceTableTest, TwoSourcesWithTheSameDescriptionAreTwoDevices) {
  plug();
  table_.setSource(sourceInfo(8, "alsa_input.usb-Jabra_Speak2_75.2", "Jabra Speak2 75"));
  ASSERT_THAT(table_.sources(), SizeIs(2));
  EXPECT_NE(table_.sources()[0].id, table_.sources()[1].id);
}

TEST_F(PulseSourceTableTest, RepairsANameThatIsNotUtf8) {
  info_.description = "Jabra \xFF Speak";
  plug();
  EXPECT_EQ(only().name, "Jabra \xEF\xBF\xBD Speak");
}

TEST_F(PulseSourceTableTest, SourceWithoutADescriptionIsNamedByItsKey) {
  info_.description = nullptr;
  plug();
  EXPECT_EQ(only().name, usbName);
}

TEST_F(PulseSourceTableTest, InputVolumeIsTheLoudestChannelUpToOne) {
  info_.volume = volumeOf({PA_VOLUME_NORM / 4, PA_VOLUME_NORM / 2});
  plug();
  EXPECT_EQ(only().inputVolume(), 0.5F);
  info_.volume = volumeOf({2 * PA_VOLUME_NORM});
  plug();
  EXPECT_EQ(only().inputVolume(), 1.0F);
}

TEST_F(PulseSourceTableTest, InputVolumeIsZeroOnlyIfTheSourceIsSilent) {
  info_.volume = volumeOf({0, 1});
  plug();
  EXPECT_GT(only().inputVolume(), 0.0F);
  info_.mute = 1;
  plug();
  EXPECT_EQ(only().inputVolume(), 0.0F);
  info_.mute = 0;
  info_.volume = volumeOf({0, 0});
  plug();
  EXPECT_EQ(only().inputVolume(), 0.0F);
}

TEST_F(PulseSourceTableTest, ReportsAChangeOnlyIfTheReadValueChanges) {
  plug();
  EXPECT_THAT(table_.setSource(info_), IsEmpty());
  info_.volume = volumeOf({PA_VOLUME_NORM + 1000});
  EXPECT_THAT(table_.setSource(info_), IsEmpty());

  info_.mute = 1;
  EXPECT_THAT(table_.setSource(info_), SizeIs(1));
  info_.volume = volumeOf({PA_VOLUME_NORM / 2});
  EXPECT_THAT(table_.setSource(info_), IsEmpty());
  info_.volume = volumeOf({0});
  EXPECT_THAT(table_.setSource(info_), IsEmpty());
  info_.mute = 0;
  EXPECT_THAT(table_.setSource(info_), IsEmpty());
}

TEST_F(PulseSourceTableTest, KeepsTheBalanceThroughAVolumeAndSilence) {
  info_.volume = volumeOf({40000, 20000});
  plug();
  const pa_cvolume halved = only().volumeFor(20000.0F / PA_VOLUME_NORM);
  EXPECT_TRUE(pa_cvolume_equal(&halved, &(info_.volume = volumeOf({20000, 10000}))));

  info_.volume = volumeOf({0, 0});
  plug();
  const pa_cvolume restored = only().volumeFor(40000.0F / PA_VOLUME_NORM);
  EXPECT_TRUE(pa_cvolume_equal(&restored, &(info_.volume = volumeOf({40000, 20000}))));
}

TEST_F(PulseSourceTableTest, OnlyVolumeZeroIsSilent) {
  plug();
  EXPECT_TRUE(pa_cvolume_is_muted(std::make_unique<pa_cvolume>(only().volumeFor(0.0F)).get()));
  const pa_cvolume faint = only().volumeFor(1e-9F);
  EXPECT_EQ(pa_cvolume_max(&faint), 1U);
  const pa_cvolume full = only().volumeFor(1.0F);
  EXPECT_EQ(pa_cvolume_max(&full), PA_VOLUME_NORM);
}

TEST_F(PulseSourceTableTest, SourceThatWasAlwaysSilentGetsEqualChannels) {
  info_.volume = volumeOf({0, 0});
  plug();
  const pa_cvolume volume = only().volumeFor(1.0F);
  EXPECT_TRUE(pa_cvolume_channels_equal_to(&volume, PA_VOLUME_NORM));
}

TEST_F(PulseSourceTableTest, RepeatsAWriteToARunningSourceUnlessVolumeOrSwitchHasChanged) {
  plug();
  const AudioObjectID id = only().id;
  table_.write(id, 0.5F);
  info_.description = "Speakerphone";
  plug();
  EXPECT_THAT(table_.takeFollowUps(), IsEmpty());
  table_.setStream(streamInfo(1, 7));
  plug();
  const auto repeated = table_.takeFollowUps();
  ASSERT_THAT(repeated, SizeIs(1));
  EXPECT_EQ(repeated[0].source, info_.index);
  EXPECT_EQ(pa_cvolume_max(&*repeated[0].volume), PA_VOLUME_NORM / 2);

  table_.write(id, 0.5F);
  info_.volume = volumeOf({PA_VOLUME_NORM / 4});
  plug();
  plug();
  EXPECT_THAT(table_.takeFollowUps(), IsEmpty());

  table_.write(id, 0.5F);
  info_.mute = 1;
  plug();
  plug();
  EXPECT_THAT(table_.takeFollowUps(), IsEmpty());
}

TEST_F(PulseSourceTableTest, RepeatsTheLastWriteOnce) {
  plug();
  table_.setStream(streamInfo(1, 7));
  const AudioObjectID id = only().id;
  table_.write(id, 0.0F);
  table_.write(id, 0.5F);
  plug();
  const auto repeated = table_.takeFollowUps();
  ASSERT_THAT(repeated, SizeIs(1));
  EXPECT_EQ(pa_cvolume_max(&*repeated[0].volume), PA_VOLUME_NORM / 2);
  plug();
  EXPECT_THAT(table_.takeFollowUps(), IsEmpty());

  table_.write(id, 0.5F);
  table_.removeSource(info_.index);
  plug();
  EXPECT_THAT(table_.takeFollowUps(), IsEmpty());
}

TEST_F(PulseSourceTableTest, ListsHardwareFirst) {
  table_.setSource(sourceInfo(1, "echo_cancel", "Jabra Speak2 75 (echo cancelled)"));
  info_.flags = PA_SOURCE_HARDWARE;
  plug();
  table_.setSource(sourceInfo(8, "noise_filter", "Jabra Speak2 75 (denoised)"));
  pa_source_info builtIn = sourceInfo(9, "alsa_input.pci", "Built-in");
  builtIn.flags = PA_SOURCE_HARDWARE;
  table_.setSource(builtIn);
  std::vector<std::uint32_t> indices;
  for (const auto& source : table_.sources()) indices.push_back(source.index);
  EXPECT_THAT(indices, ElementsAre(7, 9, 1, 8));
}

TEST_F(PulseSourceTableTest, KeepsAVolumeAboveFullWhereOneIsWritten) {
  info_.volume = volumeOf({PA_VOLUME_NORM * 3 / 2, PA_VOLUME_NORM});
  plug();
  const pa_cvolume expected = info_.volume;
  const pa_cvolume kept = only().volumeFor(1.0F);
  EXPECT_TRUE(pa_cvolume_equal(&kept, &expected));

  info_.volume = volumeOf({0, 0});
  plug();
  const pa_cvolume restored = only().volumeFor(1.0F);
  EXPECT_TRUE(pa_cvolume_equal(&restored, &expected));
  const pa_cvolume lower = only().volumeFor(0.5F);
  EXPECT_EQ(pa_cvolume_max(&lower), PA_VOLUME_NORM / 2);
}

TEST_F(PulseSourceTableTest, BounceIsReadAsZeroUntilTheNextReport) {
  plug();
  const AudioProperty change{only().id, audio::inputVolume};
  EXPECT_THAT(table_.setBounced(7), ElementsAre(change));
  EXPECT_EQ(only().inputVolume(), 0.0F);
  EXPECT_THAT(table_.setSource(info_), ElementsAre(change));
  EXPECT_EQ(only().inputVolume(), 1.0F);
  EXPECT_THAT(table_.setBounced(99), IsEmpty());
}

TEST_F(PulseSourceTableTest, BounceOfASilentSourceIsNotAChange) {
  info_.mute = 1;
  plug();
  EXPECT_THAT(table_.setBounced(7), IsEmpty());
}

/// Writes to the table's source; what the requests change is reported at once, as a server would.
class PulseSourceWriteTest : public PulseSourceTableTest {
 protected:
  void SetUp() override { plug(); }

  void write(float level) { carryOut(table_.write(only().id, level)); }
  void carryOut(const PulseWrite& write) {
    EXPECT_EQ(write.source, info_.index);
    if (write.volume) info_.volume = *write.volume;
    plug();
    if (write.muteSwitch) info_.mute = *write.muteSwitch ? 1 : 0;
    plug();
  }
  /// What the button, or another program, does; with the table's answer.
  void moveSwitch(bool muted) {
    info_.mute = muted ? 1 : 0;
    plug();
    carryOutFollowUps();
  }
  void moveLevel(pa_volume_t level) {
    info_.volume = volumeOf({level});
    plug();
    carryOutFollowUps();
  }
  void carryOutFollowUps() {
    for (const PulseWrite& write : table_.takeFollowUps()) carryOut(write);
  }
  pa_volume_t level() const { return pa_cvolume_max(&info_.volume); }

  /// The source is removed while our mute by the level is in effect, and returns with that level.
  void expectSwitchToUndoOurMuteAfter(const std::function<void()>& removal) {
    moveLevel(PA_VOLUME_NORM / 2);
    write(0.0F);
    removal();
    plug();
    EXPECT_EQ(only().inputVolume(), 0.0F);
    moveSwitch(true);
    EXPECT_EQ(level(), PA_VOLUME_NORM / 2);
    EXPECT_EQ(info_.mute, 0);
  }
};

TEST_F(PulseSourceWriteTest, MutesByTheLevelAtFirst) {
  write(0.0F);
  EXPECT_EQ(level(), 0U);
  EXPECT_EQ(info_.mute, 0);
}

TEST_F(PulseSourceWriteTest, MutesByTheSwitchOnceAnotherProgramHasMovedIt) {
  moveSwitch(true);
  moveSwitch(false);
  write(0.0F);
  EXPECT_EQ(level(), PA_VOLUME_NORM);
  EXPECT_EQ(info_.mute, 1);
  write(1.0F);
  EXPECT_EQ(info_.mute, 0);
}

TEST_F(PulseSourceWriteTest, MutesByTheLevelAgainOnceAnotherProgramHasMovedThat) {
  moveSwitch(true);
  moveSwitch(false);
  moveLevel(0);
  moveLevel(PA_VOLUME_NORM);
  write(0.0F);
  EXPECT_EQ(level(), 0U);
  EXPECT_EQ(info_.mute, 0);
}

TEST_F(PulseSourceWriteTest, SwitchThatMovesAfterAMuteByTheLevelUnmutes) {
  moveLevel(PA_VOLUME_NORM / 2);
  write(0.0F);
  moveSwitch(true);
  EXPECT_EQ(level(), PA_VOLUME_NORM / 2);
  EXPECT_EQ(info_.mute, 0);
  EXPECT_EQ(only().inputVolume(), 0.5F);
}

TEST_F(PulseSourceWriteTest, OurMuteIsUndoneOnceHoweverOftenTheSwitchMoves) {
  write(0.0F);
  info_.mute = 1;
  plug();
  EXPECT_THAT(table_.takeFollowUps(), SizeIs(1));
  // Before the server has carried it out.
  info_.mute = 0;
  plug();
  EXPECT_THAT(table_.takeFollowUps(), IsEmpty());
}

TEST_F(PulseSourceWriteTest, LevelThatDropsAfterAMuteByTheSwitchUnmutes) {
  moveLevel(PA_VOLUME_NORM / 2);
  moveSwitch(true);
  moveSwitch(false);
  write(0.0F);
  moveLevel(0);
  EXPECT_EQ(level(), PA_VOLUME_NORM / 2);
  EXPECT_EQ(info_.mute, 0);
}

TEST_F(PulseSourceWriteTest, LevelThatMovesBehindTheSwitchWithoutReachingZeroStaysMuted) {
  moveSwitch(true);
  moveSwitch(false);
  write(0.0F);
  moveLevel(PA_VOLUME_NORM / 2);
  EXPECT_EQ(level(), PA_VOLUME_NORM / 2);
  EXPECT_EQ(info_.mute, 1);
}

TEST_F(PulseSourceWriteTest, MuteByAnotherProgramIsNeverUndone) {
  moveSwitch(true);
  moveLevel(0);
  moveLevel(PA_VOLUME_NORM);
  EXPECT_EQ(info_.mute, 1);

  moveSwitch(false);
  write(0.0F);
  write(1.0F);
  moveLevel(0);
  moveSwitch(true);
  EXPECT_EQ(level(), 0U);
  EXPECT_EQ(info_.mute, 1);
}

TEST_F(PulseSourceWriteTest, WriteOfZeroToAMutedSourceIsNotAMuteOfOurs) {
  moveSwitch(true);
  write(0.0F);
  EXPECT_EQ(info_.mute, 1);
  moveLevel(0);
  EXPECT_EQ(info_.mute, 1);
  EXPECT_EQ(level(), 0U);
}

TEST_F(PulseSourceWriteTest, SwitchThatMovesAfterAReplugUndoesOurMute) {
  expectSwitchToUndoOurMuteAfter([&] { table_.removeSource(info_.index); });
}

TEST_F(PulseSourceWriteTest, SwitchThatMovesAfterTheServersRestartUndoesOurMute) {
  expectSwitchToUndoOurMuteAfter([&] { table_.clear(); });
}

TEST_F(PulseSourceWriteTest, OurMuteIsLeftToTheSourceAndNotToItsIndex) {
  write(0.0F);
  table_.clear();
  info_.name = "alsa_input.pci";
  plug();
  moveSwitch(true);
  EXPECT_EQ(level(), 0U);
  EXPECT_EQ(info_.mute, 1);

  table_.clear();
  info_.name = usbName;
  info_.index = 8;
  info_.mute = 0;
  plug();
  moveSwitch(true);
  EXPECT_EQ(level(), PA_VOLUME_NORM);
  EXPECT_EQ(info_.mute, 0);
}

TEST_F(PulseSourceWriteTest, LevelThatDropsAfterAReplugUndoesOurMuteByTheSwitch) {
  moveSwitch(true);
  moveSwitch(false);
  write(0.0F);
  table_.removeSource(info_.index);
  plug();
  moveLevel(0);
  EXPECT_EQ(level(), PA_VOLUME_NORM);
  EXPECT_EQ(info_.mute, 0);
}

TEST_F(PulseSourceWriteTest, MuteByAnotherProgramIsNotUndoneAfterAReplug) {
  moveLevel(0);
  table_.removeSource(info_.index);
  plug();
  moveSwitch(true);
  EXPECT_EQ(level(), 0U);
  EXPECT_EQ(info_.mute, 1);
}

TEST_F(PulseSourceWriteTest, SourceThatIsAudibleAfterAReplugIsNotMutedByUs) {
  write(0.0F);
  table_.removeSource(info_.index);
  info_.volume = volumeOf({PA_VOLUME_NORM});
  plug();
  moveLevel(0);
  moveSwitch(true);
  EXPECT_EQ(level(), 0U);
  EXPECT_EQ(info_.mute, 1);
}

TEST_F(PulseSourceTableTest, IsRunningFromTheFirstStreamToTheLast) {
  plug();
  const AudioProperty change{only().id, audio::runningSomewhere};
  EXPECT_FALSE(only().running);
  EXPECT_THAT(table_.setStream(streamInfo(1, 7)), ElementsAre(change));
  EXPECT_TRUE(only().running);
  EXPECT_THAT(table_.setStream(streamInfo(2, 7)), IsEmpty());
  EXPECT_THAT(table_.removeStream(1), IsEmpty());
  EXPECT_THAT(table_.removeStream(2), ElementsAre(change));
  EXPECT_FALSE(only().running);
}

TEST_F(PulseSourceTableTest, StreamReportedBeforeItsSourceCounts) {
  table_.setStream(streamInfo(1, 7));
  plug();
  EXPECT_TRUE(only().running);
}

TEST_F(PulseSourceTableTest, MovedStreamCountsForItsNewSource) {
  plug();
  table_.setSource(sourceInfo(8, "alsa_input.pci", "Built-in"));
  const AudioObjectID usb = table_.sources()[0].id;
  const AudioObjectID builtIn = table_.sources()[1].id;
  table_.setStream(streamInfo(1, 7));
  EXPECT_THAT(table_.setStream(streamInfo(1, 8)),
              ElementsAre(AudioProperty{usb, audio::runningSomewhere},
                          AudioProperty{builtIn, audio::runningSomewhere}));
  EXPECT_FALSE(table_.find(usb)->running);
  EXPECT_TRUE(table_.find(builtIn)->running);
}

TEST_F(PulseSourceTableTest, PausedStreamDoesNotCount) {
  plug();
  auto stream = streamInfo(1, 7);
  stream.corked = 1;
  EXPECT_THAT(table_.setStream(stream), IsEmpty());
  stream.corked = 0;
  EXPECT_THAT(table_.setStream(stream), SizeIs(1));
  stream.corked = 1;
  EXPECT_THAT(table_.setStream(stream), SizeIs(1));
  EXPECT_FALSE(only().running);
}

TEST_F(PulseSourceTableTest, ListsTheProcessesThatRecordFromASource) {
  plug();
  const AudioObjectID id = only().id;
  EXPECT_THAT(table_.recordingProcesses(id), IsEmpty());
  table_.setStream(streamOf("4711", 1, 7));
  table_.setStream(streamOf("4711", 2, 7));
  table_.setStream(streamOf("815", 3, 7));
  table_.setStream(streamOf("42", 4, 8));
  EXPECT_THAT(table_.recordingProcesses(id), ElementsAre(815, 4711));
  table_.removeStream(3);
  EXPECT_THAT(table_.recordingProcesses(id), ElementsAre(4711));
  EXPECT_THAT(table_.recordingProcesses(id + 1), IsEmpty());
}

TEST_F(PulseSourceTableTest, ListsNoProcessForAStreamThatNamesNone) {
  plug();
  table_.setStream(streamInfo(1, 7));
  std::uint32_t index = 2;
  for (const char* text : {"", "0", "-5", "12x", " 12", "99999999999"}) {
    table_.setStream(streamOf(text, index++, 7));
  }
  EXPECT_TRUE(only().running);
  EXPECT_THAT(table_.recordingProcesses(only().id), IsEmpty());
}

TEST_F(PulseSourceTableTest, StreamWithoutASourceCountsOnceItHasOne) {
  plug();
  auto stream = streamInfo(1, PA_INVALID_INDEX);
  EXPECT_THAT(table_.setStream(stream), IsEmpty());
  stream.source = 7;
  EXPECT_THAT(table_.setStream(stream), SizeIs(1));
}

/// One mark that identifies a level meter.
struct MeterMark {
  const char* label;
  const char* resampler;
  const char* streamName;
  const char* key;
  const char* value;
};

class PulseMeterTest : public testing::TestWithParam<MeterMark> {};

TEST_P(PulseMeterTest, EachMarkAloneIdentifiesAMeter) {
  PulseSourceTable table;
  table.setSource(sourceInfo(7, usbName, "Jabra Speak2 75"));
  const std::unique_ptr<pa_proplist, decltype(&pa_proplist_free)> properties(pa_proplist_new(),
                                                                             pa_proplist_free);
  auto stream = streamInfo(1, 7);
  stream.resample_method = GetParam().resampler;
  stream.name = GetParam().streamName;
  stream.proplist = properties.get();
  if (GetParam().key != nullptr) {
    pa_proplist_sets(stream.proplist, GetParam().key, GetParam().value);
  }
  EXPECT_THAT(table.setStream(stream), IsEmpty());
  EXPECT_FALSE(table.sources().front().running);
}

INSTANTIATE_TEST_SUITE_P(
    , PulseMeterTest,
    testing::Values(MeterMark{"resampler", "peaks", "Meeting", nullptr, nullptr},
                    MeterMark{"name", nullptr, "Peak detect", nullptr, nullptr},
                    MeterMark{"peaks", nullptr, "Meeting", "resample.peaks", "true"},
                    MeterMark{"monitoring", nullptr, "Meeting", "stream.monitor", "true"},
                    MeterMark{"mixer", nullptr, "Meeting", PA_PROP_APPLICATION_ID,
                              "org.PulseAudio.pavucontrol"},
                    MeterMark{"settings", nullptr, "Meeting", PA_PROP_APPLICATION_ID,
                              "org.gnome.VolumeControl"}),
    [](const auto& instance) { return instance.param.label; });

TEST_F(PulseSourceTableTest, OtherPropertiesDoNotMakeAMeter) {
  plug();
  const std::unique_ptr<pa_proplist, decltype(&pa_proplist_free)> properties(pa_proplist_new(),
                                                                             pa_proplist_free);
  auto stream = streamInfo(1, 7);
  stream.resample_method = "speex-float-1";
  stream.proplist = properties.get();
  pa_proplist_sets(stream.proplist, "stream.monitor", "false");
  pa_proplist_sets(stream.proplist, PA_PROP_APPLICATION_ID, "com.microsoft.teams");
  EXPECT_THAT(table_.setStream(stream), SizeIs(1));
}

TEST_F(PulseSourceTableTest, ClearRemovesSourcesAndStreams) {
  EXPECT_THAT(table_.clear(), IsEmpty());
  plug();
  table_.setStream(streamInfo(1, 7));
  EXPECT_THAT(table_.clear(), ElementsAre(listChange));
  EXPECT_THAT(table_.sources(), IsEmpty());
  plug();
  EXPECT_FALSE(only().running);
}

TEST_F(PulseSourceTableTest, RemovingAnUnknownSourceOrStreamChangesNothing) {
  plug();
  EXPECT_THAT(table_.removeSource(99), IsEmpty());
  EXPECT_THAT(table_.removeStream(99), IsEmpty());
  EXPECT_THAT(table_.sources(), SizeIs(1));
}

}  // namespace
}  // namespace hushbox
