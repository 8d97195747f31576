// The recording window on the offscreen platform with the Virtual Turntable as its input: a
// session from Record to tracks in the main window's list.
#include "app/AppStartup.h"
#include "devices/SoundDevices.h"
#include "jobs/ScriptedUserInteraction.h"
#include "platform/Settings.h"
#include "record/SoundRecordDevice.h"
#include "support/QtTestApp.h"
#include "support/TempHome.h"
#include "ui/LevelMeter.h"
#include "ui/MainWindow.h"
#include "ui/QtMainThreadQueue.h"
#include "ui/RecordingWindow.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

// Selects the Virtual Turntable, playing `side` at `speed` times real time, as the input.
void UseVirtualTurntable(const fs::path& side, int speed) {
    setenv("VINORA_VIRTUAL_TURNTABLE", (side.string() + ",speed=" + std::to_string(speed)).c_str(), 1);
    std::vector<LSoundDeviceInfo> devices;
    GetSoundInputDevices(devices);
    for (size_t i = 0; i < devices.size(); ++i)
        if (devices[i].id == kVirtualTurntableId)
            LSettingSetSoundRecordDevice("Settings", "SoundInDevice",
                                         LSoundRecordDevice(static_cast<int>(i), 0));
}

QPushButton* Button(QWidget& window, const QString& text) {
    for (QPushButton* button : window.findChildren<QPushButton*>())
        if (button->text() == text) return button;
    return nullptr;
}

TEST(RecordingWindowTest, RecordsTracksIntoTheMainWindowsList) {
    QtTestApp();
    TempHome home;
    LScriptedUserInteraction ui;
    LQtMainThreadQueue queue;
    const LAppStartup startup(queue, &ui);
    const fs::path output = home.Path() / "out";
    fs::create_directories(output);
    LUserSettingSetString("Settings", "AppOutputFolder", output.c_str());
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 0);
    const fs::path side = home.Path() / "side.wav";
    RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(home.Path() / "song.wav") +
               " synth 3 sine 440 vol 0.5 && sox -n -r 44100 -c 2 -b 16 " +
               ShellQuote(home.Path() / "gap.wav") + " trim 0 3 && sox " +
               ShellQuote(home.Path() / "song.wav") + " " + ShellQuote(home.Path() / "gap.wav") +
               " " + ShellQuote(home.Path() / "song.wav") + " " + ShellQuote(side));
    UseVirtualTurntable(side, 4);
    {
        LMainWindow main{LMainDialogWindows{}};
        main.Dialog().InitDialog();
        LRecordingWindow recording(main.Dialog(), &main);
        recording.show();
        EXPECT_EQ(recording.StatusLabel()->text(), "Idle");
        Button(recording, "&Record")->click();
        EXPECT_EQ(recording.StatusLabel()->text(), "Waiting for audio stream");
        EXPECT_TRUE(QTest::qWaitFor([&] { return recording.StatusLabel()->text() == "Recording"; },
                                    5000));
        EXPECT_TRUE(QTest::qWaitFor([&] { return main.List()->model()->rowCount() == 2; }, 20000));
        EXPECT_EQ(recording.Meter()->ColourAt(-24), QColor(255, 255, 0));
    }
    unsetenv("VINORA_VIRTUAL_TURNTABLE");
}

} // namespace
