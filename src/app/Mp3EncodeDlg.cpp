#include "app/Mp3EncodeDlg.h"

#include "platform/ProgramInfo.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace {

uint16_t ParseBitRate(const std::string& text) {
    return static_cast<uint16_t>(std::clamp(std::strtol(text.c_str(), nullptr, 10), 0L, 65535L));
}

int LastItem(const auto& items) {
    return static_cast<int>(std::size(items)) - 1;
}

} // namespace

LMp3EncodeDlg::LMp3EncodeDlg(LMp3EncodeSettings& record) : record_(record) {
    Show(record);
}

void LMp3EncodeDlg::Show(const LMp3EncodeSettings& values) {
    constantBitRate_ = values.constantBitRate != 0;
    cbrBitRate_ = std::to_string(values.cbrBitRate);
    highQuality_ = values.highQuality != 0;
    vbrMinBitRate_ = std::to_string(values.vbrMinBitRate);
    vbrMaxBitRate_ = std::to_string(values.vbrMaxBitRate);
    qualityItem_ = std::min<int>(values.vbrQuality, LastItem(kQualityItems));
    stereoItem_ = values.channelMode <= LastItem(kStereoItems) ? values.channelMode : 0;
    errorProtection_ = values.errorProtection != 0;
}

void LMp3EncodeDlg::RestoreDefaults() {
    LMp3EncodeSettings defaults{LMp3EncodeSettings::DefaultsTag{}};
    defaults.channelMode = LMp3EncodeSettings::modeJoint;
    Show(defaults);
}

bool LMp3EncodeDlg::Ok(LUserInteraction& user) {
    invalidControl_ = invalidNone;
    LMp3EncodeSettings values = record_;
    values.constantBitRate = constantBitRate_;
    values.cbrBitRate = ParseBitRate(cbrBitRate_);
    values.highQuality = highQuality_;
    values.vbrMinBitRate = ParseBitRate(vbrMinBitRate_);
    values.vbrMaxBitRate = ParseBitRate(vbrMaxBitRate_);
    values.vbrQuality = static_cast<uint8_t>(std::clamp(qualityItem_, 0, LastItem(kQualityItems)));
    values.channelMode = static_cast<uint8_t>(std::clamp(stereoItem_, 0, LastItem(kStereoItems)));
    values.errorProtection = errorProtection_;

    if (!values.constantBitRate) {
        if (values.vbrMaxBitRate >= 161 && values.vbrMinBitRate < 32) {
            user.ShowMessage(kProgramName, kRangeTooWideText, LMessageButtons::Ok);
            return false;
        }
        if (values.vbrMaxBitRate < values.vbrMinBitRate) {
            invalidControl_ = invalidVbrMax;
            user.ShowTip(kTitle, kMaxBelowMinText);
            return false;
        }
    }
    record_ = values;
    record_.SaveAsDefaultSettings();
    return true;
}
