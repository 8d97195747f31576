#include "codecs/mp3/MP3Stereo.h"

#include "codecs/mp3/MP3BandTables.h"
#include "codecs/mp3/MP3Header.h"
#include "codecs/mp3/MP3Requantize.h"
#include "codecs/mp3/MP3ScaleFactors.h"
#include "codecs/mp3/MP3SideInfo.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

// Left and right factors of every intensity position.
struct IntensityTables {
    float mpeg1[7][2];     // position p: tan(p pi / 12) / (1 + tan), 1 / (1 + tan)
    float mpeg2[2][32][2]; // [intensity scale][position]

    IntensityTables() {
        for (int p = 0; p < 7; ++p) {
            const double ratio = std::tan(p * std::numbers::pi / 12);
            mpeg1[p][0] = static_cast<float>(ratio / (1 + ratio));
            mpeg1[p][1] = static_cast<float>(1 / (1 + ratio));
        }
        for (int scale = 0; scale < 2; ++scale) {
            const double step = std::pow(2.0, -0.25 * (scale + 1));
            for (int p = 0; p < 32; ++p) {
                // Odd positions lower the left channel, even ones the right.
                mpeg2[scale][p][0] = static_cast<float>(p & 1 ? std::pow(step, (p + 1) / 2) : 1.0);
                mpeg2[scale][p][1] = static_cast<float>(p & 1 ? 1.0 : std::pow(step, p / 2));
            }
        }
    }

    static const IntensityTables& Get() {
        static const IntensityTables tables;
        return tables;
    }
};

void MidSide(float* left, float* right, int from, int to) {
    constexpr float kInvSqrt2 = 0.70710678118654752f;
    for (int i = from; i < to; ++i) {
        const float m = left[i];
        const float s = right[i];
        left[i] = (m + s) * kInvSqrt2;
        right[i] = (m - s) * kInvSqrt2;
    }
}

// Handles one band segment of the intensity region: position < 0 or an illegal position
// leaves it to mid/side (when on).
class IntensityStereo {
public:
    IntensityStereo(const MP3Header& header, const MP3ScaleFactors& factors, bool midSide,
                    float* left, float* right)
        : mpeg1_(header.version == 0), scale_(factors.intensityScale), midSide_(midSide),
          left_(left), right_(right) {}

    void Apply(int from, int to, int position, int limit) {
        if (mpeg1_ ? position >= 7 : position >= limit) {
            Plain(from, to);
            return;
        }
        const IntensityTables& tables = IntensityTables::Get();
        const float* k = mpeg1_ ? tables.mpeg1[position] : tables.mpeg2[scale_][position];
        for (int i = from; i < to; ++i) {
            const float v = left_[i];
            left_[i] = v * k[0];
            right_[i] = v * k[1];
        }
    }

    // The highest band carries no position of its own: it takes the one of the band below
    // when that band is intensity coded too, and plays in the centre otherwise.
    void ApplyTop(int from, int to, bool belowCoded, int position, int limit) {
        if (belowCoded)
            Apply(from, to, position, limit);
        else
            Apply(from, to, mpeg1_ ? 3 : 0, 1);
    }

    void Plain(int from, int to) {
        if (midSide_) MidSide(left_, right_, from, to);
    }

private:
    bool mpeg1_;
    int scale_;
    bool midSide_;
    float* left_;
    float* right_;
};

bool AnyNonzero(const float* x, int from, int to) {
    for (int i = from; i < to; ++i)
        if (x[i] != 0.0f) return true;
    return false;
}

void LongBlockIntensity(const MP3BandTable& bands, const MP3ScaleFactors& factors, int rightCount,
                        IntensityStereo& stereo, int firstBand, int endLine) {
    // Intensity coding starts at the band after the last one with right-channel data.
    int start = firstBand;
    while (start < 22 && bands.longBands[start] < endLine && bands.longBands[start] < rightCount)
        ++start;
    stereo.Plain(0, bands.longBands[start]);
    for (int sfb = start; sfb < 22 && bands.longBands[sfb] < endLine; ++sfb) {
        const int to = std::min<int>(bands.longBands[sfb + 1], endLine);
        if (sfb < 21)
            stereo.Apply(bands.longBands[sfb], to, factors.longBands[sfb], factors.longLimit[sfb]);
        else
            stereo.ApplyTop(bands.longBands[sfb], to, start < 21, factors.longBands[20],
                            factors.longLimit[20]);
    }
}

} // namespace

void JointStereoProcessing(const MP3Header& header, const MP3GranuleInfo& right,
                           const MP3ScaleFactors& rightFactors, const MP3BandTable& bands,
                           float* left, float* rightSpectrum, int* count) {
    if (header.mode != 1) return;
    const bool midSide = (header.modeExtension & 2) != 0;
    const bool intensity = (header.modeExtension & 1) != 0;
    if (!intensity) {
        if (midSide) {
            const int n = std::max(count[0], count[1]);
            MidSide(left, rightSpectrum, 0, n);
            count[0] = count[1] = n;
        }
        return;
    }

    IntensityStereo stereo(header, rightFactors, midSide, left, rightSpectrum);
    const int shortStart = GetShortBlockStart(right, bands);
    if (shortStart == 576) {
        LongBlockIntensity(bands, rightFactors, count[1], stereo, 0, 576);
    } else {
        // Short windows: the intensity region starts per window above its last nonzero band.
        const int firstShort = shortStart == 0 ? 0 : 3;
        int lowestStart = 13;
        for (int w = 0; w < 3; ++w) {
            int start = firstShort;
            for (int sfb = 12; sfb >= firstShort; --sfb) {
                const int width = bands.shortBands[sfb + 1] - bands.shortBands[sfb];
                const int from = bands.shortBands[sfb] * 3 + w * width;
                if (AnyNonzero(rightSpectrum, from, from + width)) {
                    start = sfb + 1;
                    break;
                }
            }
            lowestStart = std::min(lowestStart, start);
            for (int sfb = firstShort; sfb < 13; ++sfb) {
                const int width = bands.shortBands[sfb + 1] - bands.shortBands[sfb];
                const int from = bands.shortBands[sfb] * 3 + w * width;
                if (sfb < start)
                    stereo.Plain(from, from + width);
                else if (sfb < 12)
                    stereo.Apply(from, from + width, rightFactors.shortBands[sfb][w],
                                 rightFactors.shortLimit[sfb]);
                else
                    stereo.ApplyTop(from, from + width, start < 12, rightFactors.shortBands[11][w],
                                    rightFactors.shortLimit[11]);
            }
        }
        if (shortStart > 0) {
            // Mixed block: the long part is intensity coded only when no short window of the
            // right channel holds data.
            if (lowestStart == firstShort && !AnyNonzero(rightSpectrum, shortStart, 576))
                LongBlockIntensity(bands, rightFactors, std::min(count[1], shortStart), stereo, 0,
                                   shortStart);
            else
                stereo.Plain(0, shortStart);
        }
    }
    count[0] = count[1] = 576;
}
