// The recording window on the offscreen platform with the Virtual Turntable as its input: a
// session from Record to tracks in the main window's list.
#include "ui/DesktopTest.h"
#include "ui/LevelMeter.h"
#include "ui/MainWindow.h"
#include "ui/RecordingWindow.h"

#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTest>

namespace {

class RecordingWindowTest : public DesktopTest {};

TEST_F(RecordingWindowTest, RecordsTracksIntoTheMainWindowsList) {
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 0);
    // Two songs of 3 s with 3 s of silence between them.
    const std::filesystem::path song = home.Path() / "song.wav", side = home.Path() / "side.wav";
    Tone(song, 3);
    RunCommand("sox " + ShellQuote(song) + " -p pad 0 3 | sox - " + ShellQuote(song) + " -b 16 " +
               ShellQuote(side));
    UseVirtualTurntable(side, 4);
    {
        LMainWindow main{LMainDialogWindows{}};
        main.Dialog().InitDialog();
        LRecordingWindow recording(main.Dialog(), &main);
        recording.show();
        EXPECT_EQ(recording.StatusLabel()->text(), "Idle");
        QPushButton* record = nullptr;
        for (QPushButton* button : recording.findChildren<QPushButton*>())
            if (button->text() == "&Record") record = button;
        ASSERT_NE(record, nullptr);
        record->click();
        EXPECT_EQ(recording.StatusLabel()->text(), "Waiting for audio stream");
        EXPECT_TRUE(QTest::qWaitFor([&] { return recording.StatusLabel()->text() == "Recording"; },
                                    5000));
        EXPECT_TRUE(QTest::qWaitFor([&] { return main.List()->model()->rowCount() == 2; }, 20000));
        EXPECT_EQ(recording.Meter()->ColourAt(-24), QColor(255, 255, 0));
    }
    unsetenv("VINORA_VIRTUAL_TURNTABLE");
}

} // namespace
