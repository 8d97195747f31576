#include "app/WaveEncodeDlg.h"

#include "platform/Settings.h"

#include <cstdlib>

const char* const _szStandardSampleRatesList[12] = {"6000",  "8000",  "11025", "16000",
                                                    "22050", "32000", "44100", "48000",
                                                    "64000", "88200", "96000", "196000"};

namespace {

constexpr const char* kSection = "Settings";
constexpr const char* kPresetKey = "WavFormatPreset";

} // namespace

LWaveEncodeDlg::LWaveEncodeDlg(const LWaveFileFormat* record) {
    const int stored = LUserSettingGet<int>(kSection, kPresetKey, presetAuto);
    preset_ = stored >= presetAuto && stored <= presetCustom ? stored : presetAuto;
    if (preset_ != presetCustom || !record) return;
    encoding_ = record->wfx.wFormatTag == kWaveFormatPCM ? encodingPCM : encodingGSM;
    rateText_ = std::to_string(record->wfx.nSamplesPerSec);
    channelItem_ = record->wfx.nChannels == 1 ? 1 : record->wfx.nChannels == 2 ? 2 : 0;
}

void LWaveEncodeDlg::SetPreset(int preset) {
    preset_ = preset;
    if (preset_ != presetCustom) ResetLists();
}

void LWaveEncodeDlg::ResetLists() {
    encoding_ = encodingAuto;
    rateText_ = kAuto;
    channelItem_ = 0;
}

void LWaveEncodeDlg::Apply(LWaveFileFormat& record) const {
    LUserSettingSet<int>(kSection, kPresetKey, preset_);
    record.wfx.wFormatTag = kWaveFormatPCM;
    record.wfx.nChannels = 2;
    switch (preset_) {
    case presetAuto:
    case presetHigh:
        record.wfx.nSamplesPerSec = 44100;
        break;
    case presetMedium:
        record.wfx.nSamplesPerSec = 22050;
        break;
    case presetLow:
        record.wfx.nChannels = 1;
        record.wfx.nSamplesPerSec = 8000;
        break;
    case presetCustom:
        if (encoding_ == encodingGSM) {
            record.wfx.wFormatTag = kWaveFormatGSM610;
            record.wfx.nChannels = 1;
            record.wfx.nSamplesPerSec = 8000;
            break;
        }
        if (rateText_ != kAuto) {
            const long rate = std::strtol(rateText_.c_str(), nullptr, 10);
            if (rate > 0 && rate <= static_cast<long>(kWaveMaxSampleRate))
                record.wfx.nSamplesPerSec = static_cast<uint32_t>(rate);
        }
        if (channelItem_ == 1) record.wfx.nChannels = 1;
        break;
    }
}
