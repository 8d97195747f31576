#pragma once

#include <cstdint>

// The user's MP3 encoder settings, kept in settings section "MP3Encoder" (key, default):
//   constantBitRate "ConstantBitRate" 1   1 = constant bit rate (CBR), 0 = variable (VBR)
//   cbrBitRate      "CBRBitRate"      128 kbps
//   highQuality     "HighQuality"     1   CBR only: the encoder's high-quality switch
//   vbrMinBitRate   "VBRMinBitRate"   32  kbps
//   vbrMaxBitRate   "VBRMaxBitRate"   128 kbps
//   vbrQuality      "VBRQuality"      4   0 (highest) to 9 (lowest)
//   errorProtection "ErrorProtection" 0   a CRC in every frame
//   channelMode     "ChannelMode"     0   0 stereo, 1 joint, 2 forced mid/side, 3 mono
struct LMp3EncodeSettings {
    enum ChannelMode : uint8_t { modeStereo, modeJoint, modeForce, modeMono };

    uint8_t constantBitRate = 1;
    uint16_t cbrBitRate = 128;
    uint8_t highQuality = 1;
    uint16_t vbrMinBitRate = 32;
    uint16_t vbrMaxBitRate = 128;
    uint8_t vbrQuality = 4;
    uint8_t errorProtection = 0;
    uint8_t channelMode = modeStereo;

    // Loads every field from the settings, the defaults above for missing ones. A VBR range
    // from below 32 to 161 kbps or more is one the encoder cannot keep; the minimum is then
    // raised to 32.
    LMp3EncodeSettings();
    // The defaults, without looking at the settings.
    struct DefaultsTag {};
    explicit LMp3EncodeSettings(DefaultsTag) {}

    // Stores all eight fields.
    void SaveAsDefaultSettings() const;

    // The highest and lowest bit rate the encoder may use: the CBR rate, or the VBR range.
    int GetMaxBitRate() const { return constantBitRate ? cbrBitRate : vbrMaxBitRate; }
    int GetMinBitRate() const { return constantBitRate ? cbrBitRate : vbrMinBitRate; }
};

// The sample rate the encoder is given for a source of `rate`: one it supports, at most
// 48,000 Hz, at most 22,050 Hz for bit rates down to 31 kbps, and 44,100 Hz when bit rates
// above 160 kbps meet a rate below 32,000 Hz.
int LMp3CorrectSampleRate(const LMp3EncodeSettings& settings, int rate);
