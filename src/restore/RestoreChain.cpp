#include "restore/RestoreChain.h"

#include "restore/ClickPop.h"
#include "restore/ConvertNotify.h"
#include "restore/DCOffset.h"
#include "restore/HighPassFilter.h"
#include "restore/NoiseGates.h"
#include "restore/Normalize.h"
#include "restore/PitchSpeed.h"
#include "restore/RIAA.h"
#include "sound/ReadAhead.h"

namespace {

constexpr int kLowCutHz = 150;
constexpr int kNoiseLevelDB = -36;
constexpr int kNormalizePercent = 80;

} // namespace

LProcessResult ProcessAudioRestore(LProcessInterface& progress, LSoundSource& source,
                                   const LRestoreChoices& choices) {
    if (source->GetError() != sndErrNone) return PROCESS_FAILED;

    // One step: show its name, run it, and stop the chain when it does not succeed.
    LProcessResult result = PROCESS_DONE;
    auto step = [&](const char* text, auto run) {
        if (result != PROCESS_DONE) return;
        ConvertNotify().SetStatusText(text);
        result = run();
    };
    // The stages do their work when the output is written, and once before that when
    // normalisation measures the peak. The last stage runs on the reader's thread while
    // everything below it is read ahead on a thread of its own, so the chain uses two
    // processors. The last stage (the equaliser, when chosen) costs about as much as all the
    // others together, so while normalisation measures and keeps the pass, the chain is read
    // ahead once more above it: three threads then share the processors, none waiting for the
    // others' work, and the output is the same as from one thread.
    const int stages = choices.highPass + (choices.recordSpeed == 1 || choices.recordSpeed == 2) +
                       choices.clickPop + choices.noiseReduce + choices.equalization;
    int built = 0;
    auto stage = [&](const char* text, auto run) {
        if (result == PROCESS_DONE && ++built == stages) source = LSPReadAhead().OpenSource(source);
        step(text, run);
    };

    if (choices.dcOffset)
        step("DC Offset...", [&] { return ProcessDCOffset(progress, source); });
    if (choices.highPass)
        stage("HPF...", [&] { return ProcessLowCutFilter(progress, source, kLowCutHz); });
    if (choices.recordSpeed == 1)
        stage("33RPM Convert...", [&] { return ProcessConvert45To33RPM(progress, source); });
    else if (choices.recordSpeed == 2)
        stage("78RPM Convert...", [&] { return ProcessConvert78To45RPM(progress, source); });
    if (choices.clickPop)
        stage("Click Pop...", [&] { return ProcessClickPop(progress, source); });
    if (choices.noiseReduce)
        stage("Noise Reduce...",
             [&] { return ProcessNoiseReduction(progress, source, kNoiseLevelDB); });
    if (choices.equalization)
        stage("Equalize...", [&] { return ProcessRIAAEqCalculate(progress, source); });
    if (choices.normalization)
        step("Normalize...", [&] {
            source = LSPReadAhead().OpenSource(source);
            return ProcessNormalizeKeepingPass(progress, source, kNormalizePercent);
        });
    return result;
}
