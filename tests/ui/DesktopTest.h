#pragma once

// What the window tests share: the program's start-up over a private home whose recordings
// folder is "out", the user interaction answered from a script, tone files and the Virtual
// Turntable as the sound input.

#include "app/AppStartup.h"
#include "devices/SoundDevices.h"
#include "jobs/ScriptedUserInteraction.h"
#include "platform/Settings.h"
#include "record/SoundRecordDevice.h"
#include "support/QtTestApp.h"
#include "support/TempHome.h"
#include "ui/QtMainThreadQueue.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

class DesktopTest : public ::testing::Test {
protected:
    DesktopTest() {
        std::filesystem::create_directories(output);
        LUserSettingSetString("Settings", "AppOutputFolder", output.c_str());
    }

    // A stereo 44,100 Hz tone file made by sox.
    static void Tone(const std::filesystem::path& path, double seconds = 0.5) {
        RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(path) + " synth " +
                   std::to_string(seconds) + " sine 440 vol 0.5");
    }

    QApplication& app = QtTestApp();
    TempHome home;
    std::filesystem::path output = home.Path() / "out";
    LScriptedUserInteraction ui;
    LQtMainThreadQueue queue;
    LAppStartup startup{queue, &ui};
};

// Selects the Virtual Turntable as the input, playing `side` (empty: the demo side) at `speed`
// times real time.
inline void UseVirtualTurntable(const std::filesystem::path& side, int speed) {
    setenv("VINORA_VIRTUAL_TURNTABLE", (side.string() + ",speed=" + std::to_string(speed)).c_str(), 1);
    std::vector<LSoundDeviceInfo> devices;
    GetSoundInputDevices(devices);
    for (size_t i = 0; i < devices.size(); ++i)
        if (devices[i].id == kVirtualTurntableId)
            LSettingSetSoundRecordDevice("Settings", "SoundInDevice",
                                         LSoundRecordDevice(static_cast<int>(i), 0));
}
