#pragma once

#include "record/InputMeter.h"
#include "record/SoundRecordDevice.h"
#include "restore/RestoreChoices.h"

#include <functional>
#include <string>

// The preferences' general page: files, the recording device and volume, tones, minimum length.
class LGeneralPage {
public:
    // `setOutputFolder` hands the folder to the main window: false when it refuses it.
    LGeneralPage(std::function<bool(const std::string&)> setOutputFolder,
                 std::function<void(const LDBMC&)> levels);
    void InitDialog(const std::string& outputFolder);
    // Meters the chosen device at the chosen volume.
    void StartRecorder();
    void StopRecorder() { meter_.Stop(); }
    bool CmOk();

    bool deleteFiles = true;
    std::string outputFolder;
    LSoundRecordDevice device;
    int volume = 0;
    bool recordTone = false;
    bool useMinTime = false;
    int minTime = 2;

private:
    std::function<bool(const std::string&)> setOutputFolder_;
    LInputMeter meter_;
};

// The preferences' "Audio Settings" page: source, speed, copies, noise floor, output format and
// restoration tools.
class LAudioSettingsPage {
public:
    void InitDialog();
    // Browses for the copy folder ("Locate output folder...").
    void BrowseCopyFolder();
    bool CmOk();

    bool vinyl = true;
    int speed = 0;
    std::string copyFolder;
    bool makeCopy = false;
    bool amp = true;
    int noiseFloor = -30;
    int format = 1;
    LRestoreChoices restoration;
};
