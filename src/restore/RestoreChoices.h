#pragma once

#include <span>

// Which restoration steps a conversion runs, and the record speed to correct. Read from the
// settings in one place (section "AudioRestoration", and "RecordingSpeed" in
// "RecordingSource"), or made up by a caller that chooses for one run. The setup wizard and the
// preferences show and store the same six switches through this type.
struct LRestoreChoices {
    bool dcOffset = false;
    bool highPass = false;
    int recordSpeed = 0; // 0 none, 1 45 to 33 RPM, 2 78 to 45 RPM
    bool clickPop = false;
    bool noiseReduce = false;
    bool equalization = false; // the RIAA curve
    bool normalization = false;

    // The stored choices; a switch that is not stored takes its value from `defaults`, or is
    // off without them.
    static LRestoreChoices FromSettings();
    static LRestoreChoices FromSettings(const LRestoreChoices& defaults);
    // Whether the stored choices leave anything to do: every step that is not stored counts as
    // on here, so that an unconfigured program restores.
    static bool IsWantedBySettings();
    // Stores the six switches. The record speed is part of the source choice, which stores it.
    void StoreSwitches() const;
    bool Any() const;
};

// One of the six switches: its member and its key in "AudioRestoration".
struct LRestoreSwitch {
    bool LRestoreChoices::*member;
    const char* key;
};
// The switches in the order the restoration chain applies them.
std::span<const LRestoreSwitch> RestoreSwitches();
