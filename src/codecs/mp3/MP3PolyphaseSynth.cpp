#include "codecs/mp3/MP3PolyphaseSynth.h"

#include "codecs/mp3/MP3CpuDispatch.h"
#include "codecs/mp3/MP3LookupTables.h"

#include <algorithm>
#include <cstring>

// ISO/IEC 11172-3 Table B.3, D[0..256] times 65,536.
const std::int32_t MP3PolyphaseSynth::D[257] = {
    0,      -1,     -1,     -1,     -1,     -1,     -1,     -2,     -2,     -2,     -2,     -3,
    -3,     -4,     -4,     -5,     -5,     -6,     -7,     -7,     -8,     -9,     -10,    -11,
    -13,    -14,    -16,    -17,    -19,    -21,    -24,    -26,    -29,    -31,    -35,    -38,
    -41,    -45,    -49,    -53,    -58,    -63,    -68,    -73,    -79,    -85,    -91,    -97,
    -104,   -111,   -117,   -125,   -132,   -139,   -147,   -154,   -161,   -169,   -176,   -183,
    -190,   -196,   -202,   -208,   213,    218,    222,    225,    227,    228,    228,    227,
    224,    221,    215,    208,    200,    189,    177,    163,    146,    127,    106,    83,
    57,     29,     -2,     -36,    -72,    -111,   -153,   -197,   -244,   -294,   -347,   -401,
    -459,   -519,   -581,   -645,   -711,   -779,   -848,   -919,   -991,   -1064,  -1137,  -1210,
    -1283,  -1356,  -1428,  -1498,  -1567,  -1634,  -1698,  -1759,  -1817,  -1870,  -1919,  -1962,
    -2001,  -2032,  -2057,  -2075,  -2085,  -2087,  -2080,  -2063,  2037,   2000,   1952,   1893,
    1822,   1739,   1644,   1535,   1414,   1280,   1131,   970,    794,    605,    402,    185,
    -45,    -288,   -545,   -814,   -1095,  -1388,  -1692,  -2006,  -2330,  -2663,  -3004,  -3351,
    -3705,  -4063,  -4425,  -4788,  -5153,  -5517,  -5879,  -6237,  -6589,  -6935,  -7271,  -7597,
    -7910,  -8209,  -8491,  -8755,  -8998,  -9219,  -9416,  -9585,  -9727,  -9838,  -9916,  -9959,
    -9966,  -9935,  -9863,  -9750,  -9592,  -9389,  -9139,  -8840,  -8492,  -8092,  -7640,  -7134,
    6574,   5959,   5288,   4561,   3776,   2935,   2037,   1082,   70,     -998,   -2122,  -3300,
    -4533,  -5818,  -7154,  -8540,  -9975,  -11455, -12980, -14548, -16155, -17799, -19478, -21189,
    -22929, -24694, -26482, -28289, -30112, -31947, -33791, -35640, -37489, -39336, -41176, -43006,
    -44821, -46617, -48390, -50137, -51853, -53534, -55178, -56778, -58333, -59838, -61289, -62684,
    -64019, -65290, -66494, -67629, -68692, -69679, -70590, -71420, -72169, -72835, -73415, -73908,
    -74313, -74630, -74856, -74992, 75038,
};

namespace {

// DCT-II of size N: out[k] = sum of in[n] cos((2n + 1) k pi / 2N). The even outputs are the
// half-size DCT of in[n] + in[N - 1 - n], the odd ones sums of neighbours of the half-size DCT
// of (in[n] - in[N - 1 - n]) / (2 cos((2n + 1) pi / 2N)).
template <int N>
[[gnu::always_inline]] inline void Dct2(const float* in, float* out, const float* factors) {
    if constexpr (N == 1) {
        out[0] = in[0];
    } else {
        constexpr int H = N / 2;
        float sum[H], difference[H], even[H], odd[H];
        for (int n = 0; n < H; ++n) {
            sum[n] = in[n] + in[N - 1 - n];
            difference[n] = (in[n] - in[N - 1 - n]) * factors[H + n];
        }
        Dct2<H>(sum, even, factors);
        Dct2<H>(difference, odd, factors);
        for (int m = 0; m < H; ++m)
            out[2 * m] = even[m];
        for (int m = 0; m < H - 1; ++m)
            out[2 * m + 1] = odd[m] + odd[m + 1];
        out[N - 1] = odd[H - 1];
    }
}

// The whole window scaled to the output: full scale 1.0 becomes 524,288.
struct SynthesisWindow {
    float d[512];

    SynthesisWindow() {
        constexpr float kScale = 524288.0f / 65536.0f;
        for (int i = 0; i <= 256; ++i)
            d[i] = static_cast<float>(MP3PolyphaseSynth::D[i]) * kScale;
        // The window is the standard's filter prototype with its sign changed in every other
        // block of 64, so mirrored entries change sign except at the block boundaries.
        for (int i = 257; i < 512; ++i)
            d[i] = i % 64 == 0 ? d[512 - i] : -d[512 - i];
    }

    static const SynthesisWindow& Get() {
        static const SynthesisWindow window;
        return window;
    }
};

// One step: matrixing of the subband samples into the newest 64 values of the history at v,
// then the window over the history.
[[gnu::always_inline]] inline void SynthesisStep(const float* subbands, float* v, int* out,
                                                 int stride) {
    const MP3LookupTables& tables = MP3LookupTables::Get();
    // Matrixing: f[n] = sum of subbands[k] cos((2k + 1) n pi / 64); the 64 values of the
    // standard's vector are f[16..32], -f[31..1] and -f[0..15].
    float f[32];
    Dct2<32>(subbands, f, tables.dctFactors);
    for (int i = 0; i < 16; ++i)
        v[i] = f[16 + i];
    v[16] = 0.0f;
    for (int i = 17; i < 48; ++i)
        v[i] = -f[48 - i];
    for (int i = 48; i < 64; ++i)
        v[i] = -f[i - 48];

    // Windowing: sample j sums V[128i + j] D[64i + j] and V[128i + 96 + j] D[64i + 32 + j].
    const float* d = SynthesisWindow::Get().d;
    float sum[32] = {};
    for (int i = 0; i < 8; ++i) {
        const float* a = v + 128 * i;
        const float* b = v + 128 * i + 96;
        const float* da = d + 64 * i;
        const float* db = d + 64 * i + 32;
        for (int j = 0; j < 32; ++j)
            sum[j] += a[j] * da[j] + b[j] * db[j];
    }
    constexpr float kLimit = static_cast<float>(MP3PolyphaseSynth::kMaxAmplitude);
    for (int j = 0; j < 32; ++j)
        out[j * stride] = static_cast<int>(std::clamp(sum[j], -kLimit, kLimit));
}

__attribute__((target("avx2"))) void SynthesisStepAvx2(const float* subbands, float* v, int* out,
                                                       int stride) {
    SynthesisStep(subbands, v, out, stride);
}

void SynthesisStepBaseline(const float* subbands, float* v, int* out, int stride) {
    SynthesisStep(subbands, v, out, stride);
}

} // namespace

void MP3PolyphaseSynth::Reset() {
    std::memset(history_, 0, sizeof history_);
    offset_ = 1024;
}

void MP3PolyphaseSynth::Synthesize(const float* subbands, int* out, int stride) {
    static const auto step = ChooseForProcessor(&SynthesisStepAvx2, &SynthesisStepBaseline);
    offset_ -= 64;
    if (offset_ < 0) {
        std::memcpy(history_ + 1024 + 64, history_, 960 * sizeof *history_);
        offset_ = 1024;
    }
    step(subbands, history_ + offset_, out, stride);
}
