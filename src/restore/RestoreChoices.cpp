#include "restore/RestoreChoices.h"

#include "platform/Settings.h"

namespace {

constexpr const char* kSection = "AudioRestoration";

constexpr LRestoreSwitch kSwitches[] = {
    {&LRestoreChoices::dcOffset, "DCOffset"},
    {&LRestoreChoices::highPass, "HPF"},
    {&LRestoreChoices::clickPop, "ClickPop"},
    {&LRestoreChoices::noiseReduce, "NoiseReduce"},
    {&LRestoreChoices::equalization, "Equalization"},
    {&LRestoreChoices::normalization, "Normalization"},
};

} // namespace

std::span<const LRestoreSwitch> RestoreSwitches() {
    return kSwitches;
}

LRestoreChoices LRestoreChoices::FromSettings() {
    return FromSettings(LRestoreChoices{});
}

LRestoreChoices LRestoreChoices::FromSettings(const LRestoreChoices& defaults) {
    LRestoreChoices choices;
    for (const LRestoreSwitch& step : kSwitches)
        choices.*step.member = LUserSettingGet<bool>(kSection, step.key, defaults.*step.member);
    choices.recordSpeed =
        LUserSettingGet<int>("RecordingSource", "RecordingSpeed", defaults.recordSpeed);
    return choices;
}

bool LRestoreChoices::IsWantedBySettings() {
    LRestoreChoices allOn;
    for (const LRestoreSwitch& step : kSwitches) allOn.*step.member = true;
    return FromSettings(allOn).Any();
}

void LRestoreChoices::StoreSwitches() const {
    for (const LRestoreSwitch& step : kSwitches)
        LUserSettingSet<bool>(kSection, step.key, this->*step.member);
}

bool LRestoreChoices::Any() const {
    return dcOffset || highPass || recordSpeed != 0 || clickPop || noiseReduce || equalization ||
           normalization;
}
