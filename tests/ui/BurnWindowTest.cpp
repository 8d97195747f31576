// Burning from the main window on the offscreen platform, onto the Virtual Burner: the toolbar's
// Burn Audio and Burn MP3, the wizard's burn form finished as a user would, the burn behind its
// progress window, and the disc read back with tools nobody here wrote (bchunk, soxi, 7z).
#include "app/MainCommands.h"
#include "drives/SystemDiscService.h"
#include "ui/DesktopTest.h"
#include "ui/DesktopWindows.h"
#include "ui/MainWindow.h"
#include "ui/SetupWizardDialog.h"

#include <QAction>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include <memory>

namespace fs = std::filesystem;

namespace {

constexpr int kBurnWaitMs = 120000;

class BurnWindowTest : public DesktopTest {
protected:
    BurnWindowTest() {
        ui.SetDefaultAnswer(LMessageAnswer::No);
        RunCommand("cd " + ShellQuote(output) +
                   " && sox -n -r 44100 -c 2 -b 16 a.wav synth 1 sine 440"
                   " && sox -n -r 44100 -c 2 -b 16 b.wav synth 2 sine 550"
                   " && sox -n -r 44100 -c 2 -b 16 c.wav synth 3 sine 660"
                   " && lame --quiet c.wav c.mp3 && rm c.wav");
    }
    ~BurnWindowTest() override {
        window.reset();
        SetSCSIDriveOpener({});
        SetDiscService(nullptr);
    }

    // The Virtual Burner as the program's only drive, for the disc service and the SCSI layer,
    // and the main window showing the recordings.
    void UseBurner(const std::string& setting) {
        auto service = std::make_shared<LSystemDiscService>(setting, false);
        SetDiscService(service);
        SetSCSIDriveOpener(MakeSCSIDriveOpener([service] { return service->CopyDeviceArray(); },
                                               service->VirtualBurner()));
        window = std::make_unique<LMainWindow>(LDesktopWindows(&shown));
        shown = window.get();
        window->Dialog().LoadSavedAudioFiles();
        window->show();
    }

    // Presses a toolbar button, agrees to burn, finishes the burn form of the wizard it opens
    // (keeping the headings of the pages passed) and waits for the end of the burn: the
    // question for another copy or the failure message. The messages shown.
    std::vector<std::string> BurnFromToolbar(int command) {
        ui.QueueAnswer(LMessageAnswer::Ok);
        QTimer finisher;
        QObject::connect(&finisher, &QTimer::timeout, [&] {
            auto* wizard = dynamic_cast<LSetupWizardDialog*>(QApplication::activeModalWidget());
            if (!wizard || !wizard->isVisible() || wizard->Heading().isEmpty()) return;
            if (!headings.empty() && headings.back() == wizard->Heading()) return;
            headings.push_back(wizard->Heading());
            wizard->NextButton()->click();
        });
        finisher.start(50);
        window->ToolAction(command)->trigger();
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                for (const LInteractionCall& call : ui.Calls())
                    if (call.text.find("another copy?") != std::string::npos ||
                        call.text.starts_with("Burn has failed"))
                        return true;
                return false;
            },
            kBurnWaitMs));
        std::vector<std::string> texts;
        for (const LInteractionCall& call : ui.Calls())
            if (call.kind == LInteractionKind::Message) texts.push_back(call.caption + ": " + call.text);
        return texts;
    }

    std::string Pane(LMainWindow& window, int pane) {
        for (QLabel* label : window.findChildren<QLabel*>())
            if (label->accessibleName() == QString("Status %1").arg(pane + 1))
                return label->text().toStdString();
        return {};
    }

    fs::path disc = home.Path() / "disc";
    std::vector<QString> headings;
    LMainWindow* shown = nullptr;
    std::unique_ptr<LMainWindow> window;
};

TEST_F(BurnWindowTest, BurnAudioMakesACDOfTheSelectedRowsInListOrder) {
    UseBurner("cd-r:" + disc.string());
    window->List()->selectAll();
    ASSERT_TRUE(window->ToolAction(CM_BURN_AUDIO_CD)->isEnabled());

    const std::vector<std::string> messages = BurnFromToolbar(CM_BURN_AUDIO_CD);
    EXPECT_EQ(headings, std::vector<QString>{"CD Burn Settings"});
    ASSERT_EQ(messages.size(), 2u) << testing::PrintToString(messages);
    EXPECT_TRUE(messages[1].find("Total Files Burned: 3\r\nTotal Duration: 0:00:06.") !=
                std::string::npos)
        << messages[1];

    int status = -1;
    RunCommand("cd " + ShellQuote(home.Path()) + " && bchunk -w disc.bin disc.cue t", &status);
    ASSERT_EQ(status, 0);
    // a.wav, b.wav and c.mp3 last one, two and three seconds (the MP3 a little longer).
    for (int track = 1; track <= 3; ++track) {
        const fs::path file = home.Path() / ("t0" + std::to_string(track) + ".wav");
        ASSERT_TRUE(fs::exists(file)) << file;
        const double seconds = std::stod(RunCommand("soxi -D " + ShellQuote(file)));
        EXPECT_NEAR(seconds, track, 0.1) << file;
    }
    EXPECT_FALSE(fs::exists(home.Path() / "t04.wav"));
    // The disc was ejected; the totals pane shows the selection against the empty drive.
    EXPECT_TRUE(QTest::qWaitFor([&] { return Pane(*window, 2).ends_with(" MB / No Disc in Drive"); },
                                5000))
        << Pane(*window, 2);
}

TEST_F(BurnWindowTest, BurnMP3MakesADataDiscOfMP3Files) {
    UseBurner("dvd+r:" + disc.string());
    const std::vector<std::string> messages = BurnFromToolbar(CM_BURN_DATA_DISC);
    EXPECT_EQ(headings, (std::vector<QString>{"Data CD/DVD Options", "CD/DVD Burn Settings"}));
    ASSERT_EQ(messages.size(), 2u) << testing::PrintToString(messages);
    EXPECT_NE(messages[1].find("Total Files Burned: 3\r\nTotal Size:"), std::string::npos)
        << messages[1];
    const fs::path files = home.Path() / "read";
    int status = -1;
    RunCommand("7z x -y -o" + ShellQuote(files) + " " + ShellQuote(disc) + " >/dev/null", &status);
    ASSERT_EQ(status, 0);
    for (const char* name : {"a.mp3", "b.mp3", "c.mp3"})
        EXPECT_TRUE(fs::exists(files / name)) << name;
    // The MP3 row went on the disc as it is; the wave rows were converted.
    RunCommand("cmp " + ShellQuote(files / "c.mp3") + " " + ShellQuote(output / "c.mp3"), &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(RunCommand("soxi -t " + ShellQuote(files / "a.mp3")), "mp3\n");
    EXPECT_NE(RunCommand("isoinfo -d -i " + ShellQuote(disc)).find("Volume id: CDLABEL"),
              std::string::npos);
}

} // namespace
