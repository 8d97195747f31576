#include "codecs/Mp3EncodeSettings.h"

#include "platform/Settings.h"

#include <algorithm>

namespace {

constexpr const char* kSection = "MP3Encoder";

template <typename Field> void Load(const char* key, Field& field) {
    field = static_cast<Field>(LUserSettingGet<int>(kSection, key, field));
}

} // namespace

LMp3EncodeSettings::LMp3EncodeSettings() {
    Load("ConstantBitRate", constantBitRate);
    Load("CBRBitRate", cbrBitRate);
    Load("HighQuality", highQuality);
    Load("VBRMinBitRate", vbrMinBitRate);
    Load("VBRMaxBitRate", vbrMaxBitRate);
    Load("VBRQuality", vbrQuality);
    Load("ErrorProtection", errorProtection);
    Load("ChannelMode", channelMode);
    if (vbrMaxBitRate >= 161 && vbrMinBitRate < 32) vbrMinBitRate = 32;
}

void LMp3EncodeSettings::SaveAsDefaultSettings() const {
    LUserSettingSet<int>(kSection, "ConstantBitRate", constantBitRate);
    LUserSettingSet<int>(kSection, "CBRBitRate", cbrBitRate);
    LUserSettingSet<int>(kSection, "HighQuality", highQuality);
    LUserSettingSet<int>(kSection, "VBRMinBitRate", vbrMinBitRate);
    LUserSettingSet<int>(kSection, "VBRMaxBitRate", vbrMaxBitRate);
    LUserSettingSet<int>(kSection, "VBRQuality", vbrQuality);
    LUserSettingSet<int>(kSection, "ErrorProtection", errorProtection);
    LUserSettingSet<int>(kSection, "ChannelMode", channelMode);
}

int LMp3CorrectSampleRate(const LMp3EncodeSettings& settings, int rate) {
    if (rate < 32000 && settings.GetMaxBitRate() > 160) return 44100;
    int r = std::min(rate, 48000);
    if (settings.GetMinBitRate() <= 31 && r > 22050) r = 22050;
    if (r >= 44101 && r <= 47999) return 44100;
    if (r >= 32001 && r <= 44099) return 44100;
    if (r >= 24001 && r <= 31999) return 32000;
    if (r >= 22051 && r <= 23999) return 22050;
    if (r >= 16001 && r <= 22049) return 22050;
    if (r >= 11026 && r <= 15999) return 11025;
    if (r >= 8001 && r <= 11024) return 11025;
    if (r < 8000) return 8000;
    return r;
}
