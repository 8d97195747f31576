// Renders each window to a PNG file in the folder named by VINORA_SCREENSHOTS, for the README
// and for review (scripts/screenshots.sh). Skipped without it.
#include "platform/Settings.h"
#include "ui/DesktopTest.h"
#include "ui/EncoderSettingsDialogs.h"
#include "ui/DesktopWindows.h"
#include "ui/MainWindow.h"
#include "ui/PlayAndSplitWindow.h"
#include "ui/PreferencesDialog.h"
#include "ui/SetupWizardDialog.h"
#include "ui/ProgressDialog.h"
#include "ui/QtMainThreadQueue.h"
#include "ui/RecordingWindow.h"
#include "ui/TagEditorDialogs.h"
#include "tags/AudioTagData.h"
#include "disc/CDBurnAudio.h"
#include "drives/SystemDiscService.h"
#include "codecs/AudioFileSource.h"

#include <gtest/gtest.h>

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QTabWidget>
#include <QTableView>
#include <QTest>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

QString Folder() {
    return qEnvironmentVariable("VINORA_SCREENSHOTS");
}

void Save(QWidget& widget, const char* name) {
    QTest::qWait(50);
    ASSERT_TRUE(widget.grab().save(Folder() + "/" + name + ".png")) << name;
}

// A job that shows its window half way and takes its picture.
struct PictureJob {
    const char* name;
};

LProcessResult Process(LProcessInterface& pi, PictureJob& job) {
    pi.SetStatus("Converting", 0);
    pi.SetStatus("Side A 03.wav", 1);
    pi.SetProgress(0.42);
    pi.IsToStop();
    Save(*QApplication::activeModalWidget(), job.name);
    return PROCESS_DONE;
}

class Screenshots : public ::testing::Test {
protected:
    void SetUp() override {
        if (Folder().isEmpty()) GTEST_SKIP() << "VINORA_SCREENSHOTS names no folder";
        QtTestApp();
        fs::create_directories(Folder().toStdString());
        LMainThreadQueue::SetCurrent(&queue);
    }
    void TearDown() override { LMainThreadQueue::SetCurrent(nullptr); }

    // The recordings folder with these files of pink noise, `seconds` long.
    fs::path Recordings(const std::vector<std::pair<const char*, int>>& files) {
        const fs::path output = home.Path() / "Recordings";
        fs::create_directories(output);
        LUserSettingSetString("Settings", "AppOutputFolder", output.c_str());
        for (const auto& [name, seconds] : files)
            RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(output / name) + " synth " +
                       std::to_string(seconds) + " pinknoise vol 0.3 2>/dev/null");
        return output;
    }

    TempHome home;
    LQtMainThreadQueue queue;
};

TEST_F(Screenshots, MainWindowAndProgress) {
    Recordings({{"Side A 01 - Blue Moon.wav", 4}, {"Side A 02 - Night Train.wav", 6},
                {"Side A 03 - Harbour Lights.mp3", 5}, {"Side B 01 - Old Friends.mp3", 3},
                {"Side B 02 - Last Waltz.wav", 7}});
    // The desktop program's windows, so that the toolbar shows its commands enabled.
    LMainWindow* shown = nullptr;
    LMainWindow window{LDesktopWindows(&shown)};
    shown = &window;
    window.resize(900, 480);
    window.Dialog().LoadSavedAudioFiles();
    window.show();
    window.List()->selectRow(1);
    Save(window, "main-window");

    PictureJob job{"progress-window"};
    ProcessRunAsDialog(&window, "Converting Files", job);

    // A session on the demo side, a moment after its first track started.
    UseVirtualTurntable({}, 1);
    {
        LRecordingWindow recording(window.Dialog(), &window);
        recording.resize(640, 360);
        recording.show();
        recording.Page().CmRecord(false);
        EXPECT_TRUE(QTest::qWaitFor([&] { return recording.Page().Status() == "Recording"; }, 8000));
        QTest::qWait(700);
        Save(recording, "recording-window");
        recording.Page().CmStopSession(true);
    }
    unsetenv("VINORA_VIRTUAL_TURNTABLE");

    LAudioTagData tags;
    tags.SetTag("TITLE", "Harbour Lights", true);
    tags.SetTag("ARTIST", "The Night Trains", true);
    tags.SetTag("ALBUM", "Side A", true);
    tags.SetTag("GENRE", "Jazz", true);
    tags.SetTag("YEAR", "1978", true);
    for (const auto& [name, path] : {std::pair{"tag-editor-id3", "/music/a.mp3"},
                                     std::pair{"tag-editor-wave", "/music/a.wav"}}) {
        LTagEditorDialog editor(&window, tags, path);
        editor.show();
        Save(editor, name);
    }
    {
        LTagEditorDialog many(&window, tags);
        many.show();
        Save(many, "tag-editor-list");
    }
}

TEST_F(Screenshots, WizardAndPreferences) {
    {
        LSetupWizardDialog wizard(nullptr, [] {});
        ASSERT_TRUE(wizard.Start());
        wizard.show();
        const char* names[] = {"wizard-1-introduction", "wizard-2-source", "wizard-3-volume",
                               "wizard-4-noise", "wizard-5-restoration", "wizard-6-output",
                               "wizard-7-final"};
        for (const char* name : names) {
            Save(wizard, name);
            wizard.NextButton()->click();
        }
    }
    {
        LPreferencesDialog preferences(nullptr, home.Path().string(),
                                       [](const std::string&) { return true; });
        preferences.show();
        Save(preferences, "preferences-general");
        preferences.Tabs()->setCurrentIndex(1);
        Save(preferences, "preferences-audio");
    }
    for (const auto& [name, edit] : {std::pair{"encoder-mp3", &LEditMp3EncoderSettings},
                                     std::pair{"encoder-wave", &LEditWaveEncoderSettings}}) {
        QTimer::singleShot(100, [name] {
            QWidget* dialog = QApplication::activeModalWidget();
            ASSERT_NE(dialog, nullptr);
            Save(*dialog, name);
            static_cast<QDialog*>(dialog)->reject();
        });
        EXPECT_FALSE(edit(nullptr));
    }
}

TEST_F(Screenshots, PlayAndSplit) {
    setenv("VINORA_VIRTUAL_SPEAKER", ((home.Path() / "speaker.wav").string() + ",speed=0").c_str(), 1);
    const fs::path song = home.Path() / "Side A 03.wav";
    RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(song) +
               " synth 30 pinknoise tremolo 3 90 vol 0.7 fade 0 30 1");
    {
        LPlayAndSplitWindow window(song.string(), [](const std::string&, const std::vector<int>&) {},
                                   [] {}, nullptr);
        window.resize(760, 440);
        window.show();
        window.Start();
        window.Logic().Command(pcStop);
        window.Logic().SetTime(LSoundTime(12000));
        for (int frame : {12000 * 441 / 10 - 20000, 12000 * 441 / 10 + 26000}) {
            window.Logic().Wave().SetCursor(frame);
            window.Logic().Command(pcAddCursorPoint);
        }
        window.Logic().SetTime(LSoundTime(12000));
        std::vector<uint8_t> columns;
        EXPECT_TRUE(QTest::qWaitFor([&] {
            window.Logic().Wave().CopyColumns(columns);
            return !columns.empty() && columns.back() > 0;
        }, 5000));
        Save(window, "play-and-split");
    }
    unsetenv("VINORA_VIRTUAL_SPEAKER");
}

TEST_F(Screenshots, Burning) {
    const fs::path disc = home.Path() / "disc";
    SetDiscService(std::make_shared<LSystemDiscService>("cd-r:" + disc.string() + ",slow=20", false));
    const fs::path output = Recordings({{"Side A 01 - Blue Moon.wav", 25},
                                        {"Side A 02 - Night Train.wav", 25},
                                        {"Side A 03 - Harbour Lights.wav", 25}});

    // The main window's status bar with the selection's playing time against the blank CD.
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 4);
    {
        LMainDialogWindows windows;
        windows.burnWizard = [](const char*) {};
        LMainWindow window{windows};
        window.resize(900, 360);
        window.Dialog().LoadSavedAudioFiles();
        window.show();
        window.List()->selectAll();
        window.Dialog().UpdateMainWindowCDInfo(true);
        Save(window, "main-window-disc-totals");
    }

    LUserSettingSetString("RecordingPage", "TotalTime", "0:01:15.00");
    LUserSettingSet<int64_t>("RecordingPage", "TotalSize", 13230000);
    {
        LSetupWizardDialog wizard(nullptr, {}, {}, "Audio");
        ASSERT_TRUE(wizard.Start());
        wizard.show();
        Save(wizard, "burn-settings-audio");
    }
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 2);
    {
        LSetupWizardDialog wizard(nullptr, {}, {}, "Data");
        ASSERT_TRUE(wizard.Start());
        wizard.show();
        Save(wizard, "burn-data-options");
        wizard.NextButton()->click();
        Save(wizard, "burn-settings-data");
    }

    // The progress window while the Virtual Burner writes the second track.
    LCDBurnAudio job;
    for (const fs::directory_entry& entry : fs::directory_iterator(output)) {
        const std::string path = entry.path().string();
        job.AddTrack(LOpenAudioFileSource(path.c_str()), path.c_str(),
                     entry.path().stem().c_str(), "The Night Trains", nullptr);
    }
    bool taken = false;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        QWidget* window = QApplication::activeModalWidget();
        if (taken || !window) return;
        for (QLabel* label : window->findChildren<QLabel*>())
            if (label->text() == "Writing track 2 ...") {
                taken = true;
                Save(*window, "progress-burn");
            }
    });
    watch.start(20);
    EXPECT_EQ(ProcessRunAsDialog(nullptr, "Burn Audio CD", job), PROCESS_DONE);
    EXPECT_TRUE(taken);
    SetDiscService(nullptr);
}

} // namespace
