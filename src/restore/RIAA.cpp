#include "restore/RIAA.h"

#include "restore/Equalizer.h"
#include "restore/Gain.h"
#include "sound/DB.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

constexpr int kPixels = 256;
constexpr int kBins = 2048;

} // namespace

LProcessResult ProcessMapPixelXToFrequency(LProcessInterface& progress, int x, int& freqHz,
                                           unsigned long width) {
    if (progress.IsToStop() || x < 0) return PROCESS_FAILED;
    freqHz = static_cast<int>(std::clamp(x / static_cast<double>(width), 0.0, 1.0) * 20000);
    return PROCESS_DONE;
}

LProcessResult ProcessMapFrequencyToDB(LProcessInterface& progress, int freqHz, double& dB) {
    if (progress.IsToStop() || freqHz < 0) return PROCESS_FAILED;
    // f squared in 32 bits, as the curve has always been computed.
    const auto q = static_cast<double>(
        static_cast<int32_t>(static_cast<uint32_t>(freqHz) * static_cast<uint32_t>(freqHz)));
    // Time constants 318 us, 3180 us and 75 us: (2 pi t)^2 for each. 19.911 brings 1 kHz to
    // 0 dB; the further -13.911 puts 0 Hz at +6 dB.
    dB = 10 * std::log10(1 + q * 3.992215501823041e-6) -
         10 * std::log10(1 + q * 0.00039922155018230407) -
         10 * std::log10(1 + q * 2.2206609902451053e-7) + 19.911 - 13.911;
    return PROCESS_DONE;
}

LProcessResult ProcessMapDBToAmplitude(LProcessInterface& progress, double dB, int& amplitude) {
    if (progress.IsToStop()) return PROCESS_FAILED;
    const auto db = static_cast<int>(std::round(std::clamp(dB, -127.0, 127.0)));
    amplitude = LDB::GetTable().AmplitudeTable[db];
    return PROCESS_DONE;
}

LProcessResult ProcessMapAmplitudeToPixelY(LProcessInterface& progress, int amplitude,
                                           unsigned char& y) {
    if (progress.IsToStop()) return PROCESS_FAILED;
    if (amplitude >= 0)
        y = static_cast<unsigned char>(static_cast<int>(
            amplitude / static_cast<double>(LDB::GetTable().AmplitudeTable[6]) * 256));
    return PROCESS_DONE;
}

LProcessResult ProcessMapDBToPixelY(LProcessInterface& progress, double dB, unsigned char& y) {
    int amplitude = 0;
    const LProcessResult result = ProcessMapDBToAmplitude(progress, dB, amplitude);
    if (result != PROCESS_DONE) return result;
    return ProcessMapAmplitudeToPixelY(progress, amplitude, y);
}

LProcessResult ProcessRIAACurve(LProcessInterface& progress, int rate,
                                std::array<unsigned char, 2048>& curve) {
    if (rate <= 0) rate = 44100;
    rate = std::min(rate, 192000);
    const double binScale = 321254.0 / rate;

    // The curve drawn over 256 pixels up to 20 kHz.
    std::array<unsigned char, kPixels> y{};
    for (int x = 0; x < kPixels; ++x) {
        int freq = 0;
        double dB = 0;
        LProcessResult result = ProcessMapPixelXToFrequency(progress, x, freq, kPixels);
        if (result == PROCESS_DONE) result = ProcessMapFrequencyToDB(progress, freq, dB);
        if (result == PROCESS_DONE) result = ProcessMapDBToPixelY(progress, dB, y[x]);
        if (result != PROCESS_DONE) return result;
    }

    // Straight lines between the pixels, over the bins each pixel reaches.
    int b = 0;
    for (int x = 1; x < kPixels; ++x) {
        const int bin = static_cast<int>(
            std::min(static_cast<unsigned>(x * binScale), static_cast<unsigned>(kBins)));
        if (b >= bin) continue;
        const double slope = static_cast<double>(y[x] - y[x - 1]) / (bin - b);
        for (int k = 0; b < bin; ++k, ++b)
            curve[b] = static_cast<unsigned char>(static_cast<int>(k * slope) + y[x - 1]);
    }
    std::fill(curve.begin() + b, curve.end(), y[kPixels - 1]);
    return PROCESS_DONE;
}

LProcessResult ProcessRIAAEqCalculate(LProcessInterface& progress, LSoundSource& source) {
    progress.SetStatus("RIAA Equalization", 0);
    LSPEq eq;
    // The helpers only fail when the job is asked to stop.
    if (ProcessRIAACurve(progress, source->GetSampleRate(), eq.curve) != PROCESS_DONE)
        return PROCESS_STOPPED;
    source = eq.OpenSource(source);
    source = LSPGain(LDB::GetTable().AmplitudeTable[14]).OpenSource(source);
    return PROCESS_DONE;
}
