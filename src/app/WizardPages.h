#pragma once

#include "app/Wizard.h"
#include "record/InputMeter.h"
#include "record/SampleNoisePage.h"
#include "record/SoundRecordDevice.h"
#include "restore/RestoreChoices.h"

#include <functional>
#include <memory>
#include <string>

// The pages of the recording setup wizard. Each shows the stored choices when it is activated
// and stores what it shows on OK; its view binds to the public fields.

class LIntroductionPage : public LWizardPage {
public:
    void Activate() override;
    bool CmOk() override;
    bool IsPageValid() const override;
    bool dontShowAgain = false;
};

class LRecordSourcePage : public LWizardPage {
public:
    void Activate() override;
    bool CmOk() override;
    bool vinyl = true;
    bool amp = true;
    int speed = 0; // 0 33/45/78 RPM, 1 33 played at 45, 2 78 played at 45
    bool calibrateVolume = true;
    bool measureNoiseFloor = true;
    bool setRestoreTools = true;
    bool setOutputFormat = true;
};

// The recording volume, with the input metered while the user adjusts it.
class LRecordSettingPage : public LWizardPage {
public:
    explicit LRecordSettingPage(std::function<void(const LDBMC&)> levels);
    void Activate() override;
    void Deactivate() override;
    bool CmOk() override;
    bool IsPageValid() const override;
    // Meters the chosen device at the chosen volume.
    void Restart();
    LSoundRecordDevice device;
    int volume = -20;

private:
    LInputMeter meter_;
};

class LNoiseFloorWizardPage : public LWizardPage, private LSampleNoiseView {
public:
    explicit LNoiseFloorWizardPage(std::function<void()> refresh,
                                   std::function<void(const LDBMC&)> levels);
    void Activate() override;
    void Deactivate() override;
    bool CmOk() override;
    bool IsPageValid() const override;
    LSampleNoisePage& Noise() { return *noise_; }
    bool custom = false;
    int floor = -25;

private:
    void Refresh() override { refresh_(); }
    void Levels(const LDBMC& levels) override { levels_(levels); }

    std::function<void()> refresh_;
    std::function<void(const LDBMC&)> levels_;
    std::unique_ptr<LSampleNoisePage> noise_;
};

class LAudioRestorationPage : public LWizardPage {
public:
    void Activate() override;
    bool CmOk() override;
    bool IsPageValid() const override;
    // The six switches as shown. A cassette starts with click and pop removal off, whatever
    // was stored; the user may still switch it on.
    LRestoreChoices choices;
};

class LOutputFormatPage : public LWizardPage {
public:
    void Activate() override;
    bool CmOk() override;
    bool IsPageValid() const override;
    int format = 1;
    bool makeCopy = false;
    std::string copyFolder;
    std::string pattern;
};

class LFinalPage : public LWizardPage {
public:
    // `startRecording` tells the main window to start a recording session.
    explicit LFinalPage(std::function<void()> startRecording);
    void Activate() override;
    bool CmOk() override;
    bool startRecordingNow = true;

private:
    std::function<void()> startRecording_;
};

// Whether the MP3 encoder can be run; otherwise tells the user where to get it.
bool LCheckMp3Component();
// The folder that recordings are copied to, checked when the copy is switched on: an empty one
// is refused with a message, one that does not exist is created when the user agrees. False
// when refused, declined or it cannot be made.
bool LConfirmCopyFolder(const std::string& folder, const char* question);
// The file name pattern as stored: cleaned, with "%autonumber%", never empty.
std::string LFileNamePatternToStore(const std::string& pattern);
