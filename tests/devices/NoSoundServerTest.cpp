#include "devices/DeviceTestUtil.h"

#include <gtest/gtest.h>

namespace {

void Ignore(void*, void*) {}

// Without a sound server the virtual devices stand in: each is listed, is the default, and
// the default output plays on the Virtual Speaker; a server device cannot be opened.
TEST(NoSoundServerTest, OnlyTheVirtualDevicesAreThere) {
    const ScopedEnv server("PULSE_SERVER", "unix:/nonexistent/vinora/native");
    const ScopedEnv speaker("VINORA_VIRTUAL_SPEAKER", ",speed=0");

    std::vector<LSoundDeviceInfo> inputs, outputs;
    EXPECT_FALSE(GetSoundInputDevices(inputs));
    EXPECT_FALSE(GetSoundOutputDevices(outputs));
    ASSERT_EQ(inputs.size(), 1u);
    EXPECT_EQ(inputs[0].id, kVirtualTurntableId);
    EXPECT_EQ(inputs[0].name, "Virtual Turntable");
    EXPECT_EQ(inputs[0].serverName, "virtual-turntable");
    EXPECT_TRUE(inputs[0].isDefault);
    ASSERT_EQ(outputs.size(), 1u);
    EXPECT_EQ(outputs[0].id, kVirtualSpeakerId);
    EXPECT_EQ(outputs[0].name, "Virtual Speaker");
    EXPECT_TRUE(outputs[0].isDefault);

    LSoundDeviceInfo input;
    ASSERT_TRUE(GetDefaultSoundInputDevice(input));
    EXPECT_EQ(input.id, kVirtualTurntableId);

    std::string error;
    std::unique_ptr<LSoundOutputStream> output =
        OpenSoundOutput(kDefaultSoundOutputId, 22050, 1, Ignore, nullptr, error);
    ASSERT_TRUE(output) << error;
    EXPECT_EQ(output->GetSampleRate(), 22050);
    EXPECT_EQ(output->GetChannels(), 1);

    EXPECT_FALSE(OpenSoundInput(3, 44100, 2, error));
    EXPECT_NE(error.find("sound server"), std::string::npos) << error;
    EXPECT_FALSE(OpenSoundOutput(3, 44100, 2, Ignore, nullptr, error));
    EXPECT_NE(error.find("sound server"), std::string::npos) << error;
}

} // namespace
