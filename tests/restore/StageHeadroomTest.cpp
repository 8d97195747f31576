// Every restoration stage and converter says how far its output may reach (its maximum
// amplitude), so that the pump knows when its peak limiter must run; a stage that reaches past
// what it declares lets a loud recording wrap around in the 16-bit file.
#include "jobs/ProcessInterfaceVoid.h"
#include "restore/ClickPop.h"
#include "restore/DCOffset.h"
#include "restore/HighPassFilter.h"
#include "restore/NoiseGates.h"
#include "restore/Normalize.h"
#include "restore/PitchSpeed.h"
#include "restore/RIAA.h"
#include "sound/AudioBuffer.h"
#include "sound/ConvertRateChannels.h"
#include "support/BufferSource.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <vector>

namespace {

constexpr int kRate = 44100;
constexpr int kLargest16 = 524272;

// Two sines normalised to full scale, raised by 6 dB and clipped: a side recorded too hot.
std::vector<int> LoudSide(int frames) {
    std::vector<int> samples(static_cast<size_t>(frames) * 2);
    const double w = 2 * std::numbers::pi / kRate;
    for (int f = 0; f < frames; ++f) {
        const double value = (std::sin(w * 220 * f) + std::sin(w * 3150 * f + 1)) / 2 * 2;
        const int sample = static_cast<int>(std::clamp(value, -1.0, 1.0) * kLargest16);
        samples[2 * f] = sample;
        samples[2 * f + 1] = -sample;
    }
    return samples;
}

TEST(StageHeadroomTest, NoStageReachesPastTheAmplitudeItDeclares) {
    using Step = std::function<LProcessResult(LProcessInterface&, LSoundSource&)>;
    const struct {
        const char* name;
        Step step;
    } stages[] = {
        {"dc offset", ProcessDCOffset},
        {"high-pass", [](auto& p, auto& s) { return ProcessLowCutFilter(p, s, 150); }},
        {"45 to 33", ProcessConvert45To33RPM},
        {"78 to 45", ProcessConvert78To45RPM},
        {"click and pop", ProcessClickPop},
        {"noise gates", [](auto& p, auto& s) { return ProcessNoiseReduction(p, s, -36); }},
        {"riaa", ProcessRIAAEqCalculate},
        {"normalise", [](auto& p, auto& s) { return ProcessNormalize(p, s, 80); }},
        {"rate to 48 kHz",
         [](auto&, auto& s) {
             LSPConvertSourceRateChannels(48000, 2, s);
             return PROCESS_DONE;
         }},
    };
    TempHome home;
    const int frames = kRate * 2;
    for (const auto& stage : stages) {
        LProcessInterfaceVoid progress;
        LSoundSource source = MakeBufferSource(LoudSide(frames), kRate, 2);
        ASSERT_EQ(stage.step(progress, source), PROCESS_DONE) << stage.name;
        const std::vector<int> out = ReadAll(source, frames);
        EXPECT_LE(GetBufferPeak(out.data(), frames, 2), source->GetMaxAmplitude()) << stage.name;
    }
}

} // namespace
