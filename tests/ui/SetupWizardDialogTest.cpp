// The setup wizard and the preferences as windows on the offscreen platform: every page walked
// with the keyboard's buttons and read back through vinora-cli, and the first start of the
// program opening the wizard and then the recording window.
#include "ui/DesktopTest.h"
#include "ui/DesktopWindows.h"
#include "ui/MainWindow.h"
#include "ui/PreferencesDialog.h"
#include "ui/RecordingWindow.h"
#include "ui/SetupWizardDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

namespace fs = std::filesystem;

namespace {

// The control of that accessible name, or of that text where it has one.
template <typename T> T* Named(QWidget& window, const QString& name) {
    for (T* widget : window.findChildren<T*>()) {
        if (widget->accessibleName() == name) return widget;
        if constexpr (requires { widget->text(); }) {
            if (widget->text() == name) return widget;
        }
    }
    return nullptr;
}

std::string Stored(const std::string& section, const std::string& key) {
    std::string value = RunCommand(std::string(VINORA_CLI) + " settings get " + ShellQuote(section) +
                                   " " + ShellQuote(key));
    if (!value.empty() && value.back() == '\n') value.pop_back();
    return value;
}

class SetupWizardDialogTest : public DesktopTest {};

TEST_F(SetupWizardDialogTest, StoresEveryPageItWalksThrough) {
    bool started = false;
    LSetupWizardDialog wizard(nullptr, [&] { started = true; });
    ASSERT_TRUE(wizard.Start());
    wizard.show();
    EXPECT_FALSE(wizard.BackButton()->isEnabled());
    // The welcome stands once on the page, without the header band of the other pages.
    int welcomes = 0;
    for (QLabel* label : wizard.findChildren<QLabel*>())
        welcomes += label->isVisible() && label->text().startsWith("Welcome to the");
    EXPECT_EQ(welcomes, 1);
    Named<QCheckBox>(wizard, "&Do not show this page again")->setChecked(true);
    wizard.NextButton()->click();
    EXPECT_EQ(wizard.Heading(), "Recording Source");
    Named<QRadioButton>(wizard, "&Cassette tape")->setChecked(true);
    Named<QComboBox>(wizard, "Connection")->setCurrentIndex(1);
    Named<QComboBox>(wizard, "Speed")->setCurrentIndex(2);
    wizard.NextButton()->click();
    EXPECT_EQ(wizard.Heading(), "Recording Volume Calibration");
    Named<QSpinBox>(wizard, "Recording volume")->setValue(-6);
    wizard.NextButton()->click();
    EXPECT_EQ(wizard.Heading(), "Background Noise Measure");
    Named<QCheckBox>(wizard, "Manually &Specify Noise Floor")->setChecked(true);
    Named<QSpinBox>(wizard, "Noise floor")->setValue(-40);
    wizard.NextButton()->click();
    EXPECT_EQ(wizard.Heading(), "Audio Restoration Tools");
    EXPECT_EQ(wizard.windowTitle(), "Select Audio Restoration Tools");
    // A cassette is offered click and pop removal unticked; the user may choose it.
    QCheckBox* clickPop = Named<QCheckBox>(wizard, "Remove &clicks and pops");
    EXPECT_TRUE(clickPop->isVisible());
    EXPECT_FALSE(clickPop->isChecked());
    clickPop->setChecked(true);
    Named<QCheckBox>(wizard, "&High-pass filter (removes rumble)")->setChecked(true);
    wizard.NextButton()->click();
    EXPECT_EQ(wizard.Heading(), "Output Format");
    Named<QComboBox>(wizard, "Output format")->setCurrentIndex(0);
    Named<QLineEdit>(wizard, "File name pattern")->setText("Side A");
    Named<QCheckBox>(wizard, "Also &copy each file to:")->setChecked(true);
    const fs::path copies = home.Path() / "Copies";
    Named<QLineEdit>(wizard, "Copy folder")->setText(QString::fromStdString(copies.string()));
    wizard.NextButton()->click();
    EXPECT_EQ(wizard.Heading(), "The Wizard Setup is now complete.");
    EXPECT_EQ(wizard.NextButton()->text(), "&Finish");
    wizard.BackButton()->click();
    EXPECT_EQ(wizard.Heading(), "Output Format");
    wizard.NextButton()->click();
    wizard.NextButton()->click();
    EXPECT_EQ(wizard.result(), QDialog::Accepted);
    EXPECT_TRUE(started);
    EXPECT_TRUE(fs::is_directory(copies));

    const std::vector<std::array<std::string, 3>> expected = {
        {"Introduction", "Show", "0"},
        {"RecordingSource", "Vinyl", "0"},
        {"RecordingSource", "Amp", "0"},
        {"RecordingSource", "RecordingSpeed", "2"},
        {"Wizard", "CalibrateVolume", "1"},
        {"Wizard", "SetOutputFormat", "1"},
        {"Recording", "Volume", "-6"},
        {"Settings", "CustomNoiseFloor", "1"},
        {"Settings", "dBNoiseFloor", "-40"},
        {"AudioRestoration", "HPF", "1"},
        {"AudioRestoration", "ClickPop", "1"},
        {"AudioRestoration", "Normalization", "1"},
        {"OutputFormat", "OutputFormatNum", "0"},
        {"OutputFormat", "MakeCopy", "1"},
        {"OutputFormat", "OutputFolder", copies.string()},
        {"OutputFormat", "FileNameFormat", "Side A %autonumber%"},
        {"OutputFormat", "BurnCDNow", "0"},
        {"Settings", "StartRecordingNow", "1"},
    };
    for (const auto& [section, key, value] : expected)
        EXPECT_EQ(Stored(section, key), value) << section << "/" << key;
    EXPECT_FALSE(Stored("Settings", "SoundInDevice").empty());
}

TEST_F(SetupWizardDialogTest, PreferencesKeepTheSheetOpenOnARefusal) {
    LPreferencesDialog preferences(nullptr, "/nowhere", [](const std::string&) { return false; });
    preferences.show();
    preferences.Tabs()->setCurrentIndex(1);
    preferences.accept();
    EXPECT_TRUE(preferences.isVisible());
    EXPECT_EQ(preferences.Tabs()->currentIndex(), 0);
    EXPECT_EQ(ui.Calls().back().caption, "Vinora Records Vinyl to CD Converter");
    // A label of a row of several controls still has a working mnemonic, not a literal "&".
    QLabel* folder = Named<QLabel>(preferences, "Recordings &folder:");
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(folder->buddy(), Named<QComboBox>(preferences, "Recordings folder"));
}

TEST_F(SetupWizardDialogTest, TheFirstStartOpensTheWizardAndThenTheRecordingWindow) {
    LMainWindow* shown = nullptr;
    LMainWindow window{LDesktopWindows(&shown)};
    shown = &window;
    bool sawWizard = false, sawRecording = false;
    QTimer driver;
    QObject::connect(&driver, &QTimer::timeout, [&] {
        QWidget* modal = QApplication::activeModalWidget();
        if (auto* wizard = dynamic_cast<LSetupWizardDialog*>(modal)) {
            sawWizard = true;
            wizard->NextButton()->click();
        } else if (auto* recording = dynamic_cast<LRecordingWindow*>(modal)) {
            sawRecording = true;
            recording->close();
        }
    });
    driver.start(20);
    window.show();
    window.Start();
    EXPECT_TRUE(QTest::qWaitFor([&] { return sawRecording; }, 15000));
    EXPECT_TRUE(sawWizard);
}

} // namespace
