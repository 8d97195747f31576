#pragma once

#include "record/SoundRecordDevice.h"

#include <string>

// The options of recording sessions as the session's settings dialog edits them.
struct LRecordSettings {
    LSoundRecordDevice device;  // "Settings" "SoundInDevice"
    int volume = -20;           // "Recording" "Volume", dB
    int autoSplitTime = 2;      // "Settings" "AutoSplitTime", seconds
    bool recordAudioOnly = true;
    bool autoSplitTracks = true;
    bool playbackWhileRecording = true; // shown on for a missing key
    bool recordTone = false;
    bool stoppedTone = false;
    bool useMinTime = false;
    std::string minTime = "0:00:00.00";
    bool makeCopy = false;        // "OutputFormat" "MakeCopy"
    std::string copyFolder;       // "OutputFormat" "OutputFolder"

    // Reads every field from the settings.
    static LRecordSettings Load();
    // Stores every field; an error text when the copy folder is needed but empty (nothing is
    // stored then).
    std::string Save() const;
};

// The noise-floor tip of the settings dialog, once: its text when it is due (and marks it
// shown), else empty.
std::string LTakeNoiseFloorTip();
