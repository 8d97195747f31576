#include "restore/RestoreChain.h"

#include "platform/Settings.h"
#include "restore/ClickPop.h"
#include "restore/ConvertNotify.h"
#include "restore/DCOffset.h"
#include "restore/HighPassFilter.h"
#include "restore/NoiseGates.h"
#include "restore/Normalize.h"
#include "restore/PitchSpeed.h"
#include "restore/RIAA.h"

namespace {

constexpr const char* kSection = "AudioRestoration";
constexpr int kLowCutHz = 150;
constexpr int kNoiseLevelDB = -36;
constexpr int kNormalizePercent = 80;

bool Enabled(const char* key, bool defaultValue) {
    return LUserSettingGet<bool>(kSection, key, defaultValue);
}

int RecordingSpeed() {
    return LUserSettingGet<int>("RecordingSource", "RecordingSpeed", 0);
}

} // namespace

LProcessResult ProcessAudioRestore(LProcessInterface& progress, LSoundSource& source) {
    if (source->GetError() != sndErrNone) return PROCESS_FAILED;

    // One step: show its name, run it, and stop the chain when it does not succeed.
    LProcessResult result = PROCESS_DONE;
    auto step = [&](const char* text, auto run) {
        if (result != PROCESS_DONE) return;
        ConvertNotify().SetStatusText(text);
        result = run();
    };

    if (Enabled("DCOffset", false))
        step("DC Offset...", [&] { return ProcessDCOffset(progress, source); });
    if (Enabled("HPF", false))
        step("HPF...", [&] { return ProcessLowCutFilter(progress, source, kLowCutHz); });
    const int speed = RecordingSpeed();
    if (speed == 1)
        step("33RPM Convert...", [&] { return ProcessConvert45To33RPM(progress, source); });
    else if (speed == 2)
        step("78RPM Convert...", [&] { return ProcessConvert78To45RPM(progress, source); });
    if (Enabled("ClickPop", false))
        step("Click Pop...", [&] { return ProcessClickPop(progress, source); });
    if (Enabled("NoiseReduce", false))
        step("Noise Reduce...",
             [&] { return ProcessNoiseReduction(progress, source, kNoiseLevelDB); });
    if (Enabled("Equalization", false))
        step("Equalize...", [&] { return ProcessRIAAEqCalculate(progress, source); });
    if (Enabled("Normalization", false))
        step("Normalize...", [&] { return ProcessNormalize(progress, source, kNormalizePercent); });
    return result;
}

bool IsAudioRestoreWanted() {
    for (const char* key :
         {"DCOffset", "HPF", "Equalization", "ClickPop", "NoiseReduce", "Normalization"})
        if (Enabled(key, true)) return true;
    return RecordingSpeed() != 0;
}
