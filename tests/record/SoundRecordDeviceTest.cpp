#include "record/SoundRecordDevice.h"
#include "platform/Settings.h"
#include "devices/SoundDevices.h"
#include "record/SoundRecLLQT.h"
#include "record/SoundRecordDeviceChoice.h"

#include "support/PulseServer.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <string>

namespace {

int IndexOf(uint32_t id) {
    int index = -1;
    char name[kSoundDeviceNameSize];
    EXPECT_TRUE(FindDeviceById(id, index, name));
    return index;
}

} // namespace

TEST(RecordGainTest, RecordingLevelMapsOntoTheDeviceGainInSixteenDotSixteen) {
    EXPECT_EQ(LSoundRecLLQT::GetRecordGain(-36), 0.5);
    EXPECT_EQ(LSoundRecLLQT::GetRecordGain(0), 1.25);
    EXPECT_EQ(LSoundRecLLQT::GetRecordGain(12), 1.5);
    // (1 / 48 + 0.5) x 65536 = 34133.33, truncated.
    EXPECT_EQ(LSoundRecLLQT::GetRecordGain(-35), 34133 / 65536.0);
}

// With a sound server there are at least two inputs: the null sink's monitor and the Virtual
// Turntable, so a stored device is more than "the first one".
class RecordDeviceSettingsTest : public testing::Test {
protected:
    void SetUp() override {
        if (!PulseServer::IsInstalled()) GTEST_SKIP() << "pulseaudio is not installed";
        ASSERT_TRUE(server_.IsRunning()) << server_.Error();
        turntable_ = IndexOf(kVirtualTurntableId);
        ASSERT_GT(turntable_, 0);
    }

    TempHome home_;
    PulseServer server_;
    int turntable_ = -1;
};

TEST_F(RecordDeviceSettingsTest, StoredByListNameAndFallingBackWhenTheNameIsGone) {
    int defaultIndex = -1;
    char defaultName[kSoundDeviceNameSize];
    ASSERT_TRUE(GetDefaultSoundRecordDevice(defaultIndex, defaultName));
    EXPECT_EQ(LSettingGetSoundRecordDevice("Settings", "SoundInDevice"),
              LSoundRecordDevice(defaultIndex, 0));

    ASSERT_TRUE(LSettingSetSoundRecordDevice("Settings", "SoundInDevice",
                                             LSoundRecordDevice(turntable_, 0)));
    EXPECT_EQ(LUserSettingGetString("Settings", "SoundInDevice"), "Virtual Turntable");
    EXPECT_EQ(LUserSettingGetString("Settings", "SoundInDeviceChannel"), "0");
    EXPECT_EQ(LSettingGetSoundRecordDevice("Settings", "SoundInDevice"),
              LSoundRecordDevice(turntable_, 0));

    LUserSettingSetString("Settings", "SoundInDevice", "USB Audio CODEC (unplugged)");
    LUserSettingSet<int>("Settings", "SoundInDeviceChannel", 2);
    EXPECT_EQ(LSettingGetSoundRecordDevice("Settings", "SoundInDevice").GetIndex(), 0);
}

TEST_F(RecordDeviceSettingsTest, DropDownsListTheDevicesAndGiveBackTheChoice) {
    LSoundRecordDeviceChoice choice;
    LSoundRecordDeviceInit(choice, LSoundRecordDevice(turntable_, 0));
    ASSERT_GT(choice.devices.size(), 1u);
    EXPECT_EQ(choice.deviceSelected, turntable_);
    EXPECT_EQ(choice.devices[turntable_], "Virtual Turntable");
    EXPECT_EQ(LSoundRecordDeviceApply(choice), LSoundRecordDevice(turntable_, 0));

    choice.deviceSelected = 0;
    LSoundRecordDeviceChanged(choice);
    EXPECT_EQ(choice.inputs.size(), choice.inputPositions.size());
    EXPECT_EQ(choice.inputSelected, choice.inputs.empty() ? -1 : 0);
    EXPECT_EQ(LSoundRecordDeviceApply(choice).GetIndex(), 0);

    // A device index from a list that has since shrunk selects the first device.
    LSoundRecordDeviceInit(choice, LSoundRecordDevice(int(choice.devices.size()) + 3, 1));
    EXPECT_EQ(choice.deviceSelected, 0);
}

// A device chosen from the list is the same device after the list has changed: a new source
// that appears before it moves every later device down one place.
TEST_F(RecordDeviceSettingsTest, AChosenDeviceFollowsItsNameWhenTheListChanges) {
    const LSoundRecordDevice chosen(turntable_, 0);
    EXPECT_EQ(chosen.GetName(), "Virtual Turntable");
    int status = -1;
    RunCommand("pactl load-module module-null-sink sink_name=usb_interface >/dev/null", &status);
    ASSERT_EQ(status, 0);
    ASSERT_EQ(IndexOf(kVirtualTurntableId), turntable_ + 1);
    uint32_t id = 0;
    ASSERT_TRUE(chosen.GetId(id));
    EXPECT_EQ(id, kVirtualTurntableId);
    EXPECT_EQ(chosen.GetIndex(), turntable_ + 1);

    // The sound server's own name finds a device as well.
    ASSERT_TRUE(LSoundRecordDevice("usb_interface.monitor", 0).GetId(id));
    EXPECT_NE(id, kVirtualTurntableId);
    EXPECT_EQ(LSoundRecordDevice("usb_interface.monitor", 0).GetName(), "usb_interface.monitor");
}
