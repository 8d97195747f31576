#include "restore/RestoreChoices.h"

#include "platform/Settings.h"

namespace {

constexpr const char* kSection = "AudioRestoration";
constexpr const char* kSteps[] = {"DCOffset", "HPF", "ClickPop", "NoiseReduce", "Equalization",
                                  "Normalization"};

bool Enabled(const char* key, bool fallback) {
    return LUserSettingGet<bool>(kSection, key, fallback);
}

int RecordingSpeed() {
    return LUserSettingGet<int>("RecordingSource", "RecordingSpeed", 0);
}

} // namespace

LRestoreChoices LRestoreChoices::FromSettings() {
    LRestoreChoices choices;
    choices.dcOffset = Enabled("DCOffset", false);
    choices.highPass = Enabled("HPF", false);
    choices.recordSpeed = RecordingSpeed();
    choices.clickPop = Enabled("ClickPop", false);
    choices.noiseReduce = Enabled("NoiseReduce", false);
    choices.equalization = Enabled("Equalization", false);
    choices.normalization = Enabled("Normalization", false);
    return choices;
}

bool LRestoreChoices::IsWantedBySettings() {
    for (const char* key : kSteps)
        if (Enabled(key, true)) return true;
    return RecordingSpeed() != 0;
}

bool LRestoreChoices::Any() const {
    return dcOffset || highPass || recordSpeed != 0 || clickPop || noiseReduce || equalization ||
           normalization;
}
