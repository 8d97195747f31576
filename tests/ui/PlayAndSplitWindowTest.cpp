// The play-and-split window on the offscreen platform: points set by clicking the waveform go
// to the main window, which splits the file into its list.
#include "ui/DesktopTest.h"
#include "ui/MainWindow.h"
#include "ui/PlayAndSplitWindow.h"
#include "ui/WaveWidget.h"

#include <QComboBox>
#include <QPushButton>
#include <QTableView>
#include <QTest>

namespace {

class PlayAndSplitWindowTest : public DesktopTest {};

TEST_F(PlayAndSplitWindowTest, PointsClickedOnTheWaveformSplitTheFileIntoTheList) {
    setenv("VINORA_VIRTUAL_SPEAKER", ((home.Path() / "speaker.wav").string() + ",speed=0").c_str(), 1);
    setenv("PULSE_SERVER", ("unix:" + (home.Path() / "no-server").string()).c_str(), 1);
    const std::filesystem::path song = output / "song.wav";
    Tone(song, 3);
    {
        LMainWindow main{LMainDialogWindows{}};
        main.Dialog().LoadSavedAudioFiles();
        LPlayAndSplitWindow window(
            song.string(),
            [&main](const std::string& path, const std::vector<int>& positions) {
                main.Dialog().SplitFile(path, positions);
            },
            [] {}, &main);
        window.resize(800, 400);
        window.show();
        window.Start();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));

        // Stopped at the start the view shows the first two seconds: the middle is 1 s.
        window.Button(pcStop)->click();
        LWaveWidget* wave = window.Wave();
        QTest::mouseClick(wave, Qt::LeftButton, {}, QPoint(wave->width() / 2, 20));
        window.Button(pcAddCursorPoint)->click();
        // End moves to 3 s, so the view starts at 2 s; a quarter in is 2.5 s.
        QTest::keyClick(wave, Qt::Key_End);
        EXPECT_EQ(window.Logic().GetTime().GetMS(), 3000);
        QTest::mouseClick(wave, Qt::LeftButton, {}, QPoint(wave->width() / 4, 20));
        window.Button(pcAddCursorPoint)->click();
        ASSERT_EQ(window.SplitPointList()->count(), 2);
        EXPECT_EQ(window.SplitPointList()->itemText(0).left(8), "0:00:01.");
        EXPECT_EQ(window.SplitPointList()->itemText(1).left(8), "0:00:02.");

        // The waveform has been measured: some column of the tone is drawn.
        std::vector<uint8_t> columns;
        EXPECT_TRUE(QTest::qWaitFor([&] {
            window.Logic().Wave().CopyColumns(columns);
            return !columns.empty() && columns[columns.size() / 8] > 0;
        }, 5000));

        window.Button(pcSplit)->click();
        for (const char* piece : {"song_SPLIT_00.wav", "song_SPLIT_01.wav", "song_SPLIT_02.wav"})
            EXPECT_GE(main.Dialog().List().Find(piece), 0) << piece;
        EXPECT_EQ(main.List()->model()->rowCount(), 4);
        window.Button(pcClose)->click();
    }
    unsetenv("VINORA_VIRTUAL_SPEAKER");
    unsetenv("PULSE_SERVER");
}

} // namespace
