#pragma once

#include "app/SetupWizard.h"
#include "ui/RestoreSwitchBoxes.h"

#include <QDialog>

#include <functional>
#include <memory>

class LDBDisplay2;
class LDevicePicker;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QStackedWidget;
class QWidget;

// The recording setup wizard's window: a header with the page's heading and sub-heading, the
// page, and Back, Next (Finish on the last page) and Cancel. The burn forms ("Audio", "Data")
// show the data disc options and the burn settings page.
class LSetupWizardDialog : public QDialog, private LWizardView {
public:
    // `startRecording` runs when the final page asks to start recording at once; `toMainWindow`
    // posts the burn settings page's requests (burn, erase) to the main window.
    LSetupWizardDialog(QWidget* parent, std::function<void()> startRecording,
                       std::function<void(int message, int value)> toMainWindow = {},
                       const char* mode = "None");

    LRecordingSetupWizard& Setup() { return setup_; }
    QString Heading() const;
    QPushButton* NextButton() const { return next_; }
    QPushButton* BackButton() const { return back_; }
    // Shows the first page; false when there is none.
    bool Start();
    // Starts the wizard and runs it modally; the dialog's result says whether it was finished.
    int exec() override;
    void reject() override;

private:
    void ShowPage(int index) override;
    void CloseWizard(bool ok) override;
    // What the page's controls show into the page's fields, and back.
    void Show(const std::string& layout);
    void Store(const std::string& layout);

    QWidget* IntroductionPage();
    QWidget* SourcePage();
    QWidget* VolumePage();
    QWidget* NoisePage();
    QWidget* RestorationPage();
    QWidget* OutputPage();
    QWidget* FinalPage();
    QWidget* DataPage();
    QWidget* BurnPage();
    void RefreshNoise();
    // The burn settings page: every field, or only what a drive change, a refresh or a disc
    // event changes (drives, speeds, sizes), leaving the user's other choices as they are.
    void ShowBurnPage();
    void ShowBurnInfo();
    void StoreBurnPage();

    LRecordingSetupWizard setup_;
    QLabel* heading_;
    QLabel* subheading_;
    QWidget* header_;
    QWidget* headerLine_;
    QStackedWidget* stack_;
    QPushButton* back_;
    QPushButton* next_;
    bool closing_ = false;

    QCheckBox* dontShow_;
    QButtonGroup* source_;
    QComboBox* amp_;
    QComboBox* speed_;
    QCheckBox* showPages_[4];
    LDevicePicker* device_;
    QSpinBox* volume_;
    LDBDisplay2* volumeMeter_;
    QLabel* noiseStatus_;
    QLabel* noiseLevel_;
    QLabel* noiseLast_;
    QPushButton* measure_;
    QCheckBox* custom_;
    QSpinBox* floor_;
    LDBDisplay2* noiseMeter_;
    std::unique_ptr<LRestoreSwitchBoxes> tools_;
    QComboBox* format_;
    QCheckBox* makeCopy_;
    QLineEdit* copyFolder_;
    QLineEdit* pattern_;
    QCheckBox* startNow_;
    QComboBox* dataType_;
    QCheckBox* reencode_;
    QLineEdit* dataLabel_;
    QLabel* driveCaption_;
    QComboBox* drives_;
    QComboBox* speeds_;
    QCheckBox* eraseFirst_;
    QCheckBox* overburn_;
    QLabel* labelCaption_;
    QLineEdit* discLabel_;
    QLabel* projectSize_;
    QLabel* capacity_;
    QPushButton* eraseNow_;
    bool fillingBurnPage_ = false;
};
