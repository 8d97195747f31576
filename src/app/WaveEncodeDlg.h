#pragma once

#include "codecs/WaveFileFormat.h"

#include <string>

// The standard sample rates offered for wave output, as text.
extern const char* const _szStandardSampleRatesList[12];

// What the "WAV Encoder" dialog does, without the window: its lists, which of them can be
// changed, and what OK stores. A view shows the lists and forwards the user's choices.
//
// The preset comes from setting "WavFormatPreset" in section "Settings". Only "Custom" lets
// the user pick encoding, rate and channels, and rate and channels only for PCM; every other
// preset fixes the format and shows "Auto" in the three lists.
class LWaveEncodeDlg {
public:
    enum Preset { presetAuto, presetHigh, presetMedium, presetLow, presetCustom };
    enum Encoding { encodingAuto, encodingPCM, encodingGSM };

    static constexpr const char* kPresetItems[] = {"Auto", "High Quality", "Medium Quality",
                                                   "Low Quality", "Custom"};
    static constexpr const char* kEncodingItems[] = {"Auto", "PCM", "GSM"};
    static constexpr const char* kChannelItems[] = {"Auto", "1", "2"};
    static constexpr const char* kAuto = "Auto";

    // Shows the stored preset; for "Custom" the lists show the record's format (when given).
    explicit LWaveEncodeDlg(const LWaveFileFormat* record);

    int GetPreset() const { return preset_; }
    // Leaving "Custom" puts the three lists back to "Auto".
    void SetPreset(int preset);

    int GetEncoding() const { return encoding_; }
    void SetEncoding(int encoding) { encoding_ = encoding; }
    // "Auto" or a rate, typed or picked from "Auto" + _szStandardSampleRatesList.
    const std::string& GetRateText() const { return rateText_; }
    void SetRateText(const std::string& text) { rateText_ = text; }
    // Index into kChannelItems.
    int GetChannelItem() const { return channelItem_; }
    void SetChannelItem(int item) { channelItem_ = item; }

    bool IsEncodingEnabled() const { return preset_ == presetCustom; }
    bool IsRateEnabled() const { return IsEncodingEnabled() && encoding_ != encodingGSM; }
    bool IsChannelsEnabled() const { return IsRateEnabled(); }

    // OK: stores the preset and sets the record's tag, channels and rate from the choices.
    // Bits per sample, block align and bytes per second stay as they were.
    void Apply(LWaveFileFormat& record) const;

private:
    void ResetLists();

    int preset_ = presetAuto;
    int encoding_ = encodingAuto;
    std::string rateText_ = kAuto;
    int channelItem_ = 0;
};
