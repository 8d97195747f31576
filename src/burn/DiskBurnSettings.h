#pragma once

#include <cstdint>
#include <string>

// The burn settings, section "CDRecorder".
//
// "Speed" holds the write speed in whole "x" units (1x = the media's base speed), the unit the
// audio CD burn window offers; 65535 (and -1, as older stores may hold) means the fastest the
// drive offers. LDiskBurnSettings reads it as a factor with -1.0 for the fastest, so both sides
// use one unit.
inline constexpr int kBurnSpeedMax = 65535;

// What every burn job starts from, read in this order at construction.
struct LDiskBurnSettings {
    LDiskBurnSettings();

    bool eraseCDRW = true;
    bool overburn = false;
    double speed = -1.0; // x units; -1.0 the fastest
    uint8_t cdDrive = 0;
    bool cdLoadEject = true;
    bool verifyBurn = true;
    double audioPause = 2.0; // seconds, stored in tenths
    uint16_t copies = 1;
    bool sao = false;
    bool cdText = true;
    bool finalize = true;
    bool fullErase = false;
    bool bufferUnderRun = true;
    std::string bootableSectors; // the boot image's path; empty for none
};

// What the audio CD burn window edits.
struct LCDVNBurnSettings {
    LCDVNBurnSettings();
    // Writes the seven keys back in the order "Internal", "EraseCDRW", "Overburn", "CDLabel",
    // "Speed", "CDDrive", "CDLoadEject".
    void SaveAsDefaultSettings() const;

    uint8_t internal = 1;
    bool eraseCDRW = true;
    bool overburn = false;
    std::string cdLabel = "CDLabel";
    uint16_t speed = kBurnSpeedMax;
    uint8_t cdDrive = 0;
    bool cdLoadEject = true;
};
