#pragma once

// Which restoration steps a conversion runs, and the record speed to correct. Read from the
// settings in one place (section "AudioRestoration", and "RecordingSpeed" in
// "RecordingSource"), or made up by a caller that chooses for one run.
struct LRestoreChoices {
    bool dcOffset = false;
    bool highPass = false;
    int recordSpeed = 0; // 0 none, 1 45 to 33 RPM, 2 78 to 45 RPM
    bool clickPop = false;
    bool noiseReduce = false;
    bool equalization = false; // the RIAA curve
    bool normalization = false;

    // The stored choices; a step that is not stored is off.
    static LRestoreChoices FromSettings();
    // Whether the stored choices leave anything to do: every step that is not stored counts as
    // on here, so that an unconfigured program restores.
    static bool IsWantedBySettings();
    bool Any() const;
};
