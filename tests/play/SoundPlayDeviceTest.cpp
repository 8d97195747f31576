#include "platform/Settings.h"
#include "play/PlayerTestUtil.h"

#include <algorithm>
#include <cstring>

namespace {

using SoundPlayDeviceTest = PlayerTest;

TEST_F(SoundPlayDeviceTest, ListStartsWithTheDefaultOutputAndHoldsTheVirtualSpeaker) {
    std::vector<LSoundPlayDeviceListItem> list;
    ASSERT_GE(GetSoundPlayDeviceList(list), 2);
    EXPECT_EQ(list[0].name, "[Default Sound Out]");
    EXPECT_EQ(list[0].id, kDefaultSoundOutputId);
    EXPECT_EQ(list.back().id, kVirtualSpeakerId);

    EXPECT_EQ(LSoundPlayDevice::GetListDeviceIndex("[Default Sound Out]"), 0);
    EXPECT_EQ(LSoundPlayDevice::GetListDeviceIndex("No Such Speaker"), -1);
    char name[260];
    ASSERT_TRUE(LSoundPlayDevice::GetListDeviceName(0, name));
    EXPECT_STREQ(name, "[Default Sound Out]");
    EXPECT_FALSE(LSoundPlayDevice::GetListDeviceName(static_cast<int>(list.size()), name));

    const LSoundPlayDevice speaker = LSoundPlayDevice::FromName("virtual-speaker");
    EXPECT_EQ(speaker.GetIndex(), static_cast<int>(list.size()) - 1);
    EXPECT_EQ(speaker.GetName(), list.back().name);
    EXPECT_EQ(speaker.GetSoundComponent(), kVirtualSpeakerId);
    EXPECT_EQ(LSoundPlayDevice().GetSoundComponent(), kDefaultSoundOutputId);
    EXPECT_EQ(LSoundPlayDevice(0).GetName(), "[Default Sound Out]");
}

TEST_F(SoundPlayDeviceTest, SettingStoresTheListNameAndFallsBackToTheDefault) {
    EXPECT_EQ(LSettingGetSoundPlayDevice("Player", "Device"), LSoundPlayDevice());

    const LSoundPlayDevice speaker = LSoundPlayDevice::FromName("virtual-speaker");
    ASSERT_TRUE(LSettingSetSoundPlayDevice("Player", "Device", speaker));
    EXPECT_EQ(LUserSettingGetString("Player", "Device"), speaker.GetName());
    EXPECT_EQ(LSettingGetSoundPlayDevice("Player", "Device"), speaker);

    ASSERT_TRUE(LUserSettingSetString("Player", "Device", "Speaker Unplugged Yesterday"));
    EXPECT_EQ(LSettingGetSoundPlayDevice("Player", "Device").GetIndex(), 0);
    ASSERT_TRUE(LUserSettingSetString("Player", "Device", "[Default Sound Out]"));
    EXPECT_EQ(LSettingGetSoundPlayDevice("Player", "Device").GetIndex(), 0);
}

TEST_F(SoundPlayDeviceTest, ChangingTheDeviceWhilePlayingGoesOnToTheEnd) {
    // At twice real time, so that the change comes while the output is still playing.
    SetSpeakerSpeed(2);
    constexpr int kFrames = 44100 * 2;
    const std::vector<int> samples = RandomSamples(kFrames, 2);
    LSoundSource source = MakeBufferSource(samples, 44100, 2);
    ASSERT_TRUE(player_->Start(source));
    // Half a second in, the output is reopened (here the same Virtual Speaker, which starts its
    // file again) and goes on from where the old one had got to.
    ASSERT_TRUE(queue_.RunUntil(
        [this] {
            return std::any_of(
                listener_.events.begin(), listener_.events.end(),
                [](const PlayerEvent& e) { return e.kind == PlayerEvent::Time && e.value >= 500; });
        },
        60000));
    player_->SetDevice(LSoundPlayDevice::FromName("virtual-speaker"));
    EXPECT_TRUE(player_->IsPlaying());
    ASSERT_TRUE(RunUntilStopped());
    EXPECT_EQ(listener_.Count(PlayerEvent::Stop), 1);

    const std::vector<int> out = Output();
    ASSERT_LE(out.size(), samples.size() - 22050 * 2);
    EXPECT_TRUE(std::equal(out.begin(), out.end(),
                           samples.end() - static_cast<std::ptrdiff_t>(out.size())));
}

} // namespace
