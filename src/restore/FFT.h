#pragma once

#include <cstring>
#include <vector>

// Radix-2 complex transform of 2^order points, in place on separate real and imaginary arrays.
// The twiddle factors and the bit-reversal permutation are tables built once.
//
// Besides the complex transform, the same tables serve real transforms of N points done as
// complex transforms of N/2 points, on several sequences side by side ("lanes"): row r of an
// array holds lane j at r * Lanes + j, so every butterfly is one loop over the lanes that the
// compiler turns into vector instructions, with the same arithmetic in every lane.
class LFFT {
public:
    explicit LFFT(unsigned long order);

    unsigned long GetSize() const { return N_; }

    // Forward transform, scaled by 1/N: X[k] = (1/N) sum x[n] e^(-2 pi i k n / N).
    void DoFFT(double* re, double* im) const;
    // Inverse transform, unscaled: x[n] = sum X[k] e^(+2 pi i k n / N).
    void DoInverseFFT(double* re, double* im) const;

    // Forward real transform of N points per lane, unscaled and doubled: takes x[2n] in row n of
    // `re` and x[2n + 1] in row n of `im` (n < N/2; both arrays are overwritten) and writes
    // 2 X[k] for k = 0..N/2 to row k of `specRe`/`specIm`, whose rows are `specStride` apart.
    template <typename V, int Lanes>
    void RealForward(double* re, double* im, double* specRe, double* specIm,
                     unsigned long specStride) const;
    // Inverse real transform of N points per lane, unscaled: from bins 0..N/2 of a spectrum of a
    // real sequence (rows `specStride` apart) to x[2n] in row n of `re` and x[2n + 1] in row n
    // of `im`.
    template <typename V, int Lanes>
    void RealInverse(const double* specRe, const double* specIm, unsigned long specStride,
                     double* re, double* im) const;

private:
    void Permute(double* re, double* im) const;
    // Butterflies of every stage; sign -1 for the forward direction, +1 for the inverse.
    void Butterflies(double* re, double* im, double sign) const;
    // Position of bin k of an N/2-point transform in bit-reversed order.
    unsigned long HalfReversed(unsigned long k) const { return bitReverse_[k] >> 1; }
    // N/2-point forward transform on lanes: natural order in, bit-reversed order out.
    template <typename V, int Lanes> void HalfForward(double* re, double* im) const;
    // N/2-point inverse transform on lanes, unscaled: bit-reversed order in, natural order out.
    template <typename V, int Lanes> void HalfInverse(double* re, double* im) const;

    unsigned long order_;
    unsigned long N_;
    std::vector<unsigned long> bitReverse_;
    std::vector<double> cos_; // cos(2 pi k / N)
    std::vector<double> sin_; // sin(2 pi k / N)
};

// Two, four and eight lanes as one value, for the vector width at hand; arithmetic on them
// works lane by lane, so every width gives the same results.
using LFFTLanes2 = double __attribute__((vector_size(2 * sizeof(double))));
using LFFTLanes4 = double __attribute__((vector_size(4 * sizeof(double))));
using LFFTLanes8 = double __attribute__((vector_size(8 * sizeof(double))));

// Calls op(offset) for each group of lanes of type V (a double or one of the above) in a row of
// Lanes; op loads and stores its lanes with memcpy, so vectors never cross a function boundary.
template <typename V, int Lanes, typename Op>
[[gnu::always_inline]] inline void ForLaneGroups(Op op) {
    constexpr int kWidth = sizeof(V) / sizeof(double);
    static_assert(Lanes % kWidth == 0);
    for (int l = 0; l < Lanes; l += kWidth)
        op(l);
}

template <typename V, int Lanes>
[[gnu::always_inline]] inline void LFFT::HalfForward(double* re, double* im) const {
    const unsigned long M = N_ / 2;
    for (unsigned long half = M / 2; half > 0; half >>= 1) {
        // The twiddles of this stage are e^(-2 pi i j / 2 half) = table entry j * N / 2 half.
        const unsigned long step = N_ / (2 * half);
        for (unsigned long start = 0; start < M; start += 2 * half) {
            for (unsigned long j = 0; j < half; ++j) {
                const double wr = cos_[j * step];
                const double wi = -sin_[j * step];
                double* rowAr = re + (start + j) * Lanes;
                double* rowAi = im + (start + j) * Lanes;
                double* rowBr = rowAr + half * Lanes;
                double* rowBi = rowAi + half * Lanes;
                ForLaneGroups<V, Lanes>([&](int l) {
                    V ar, ai, br, bi;
                    std::memcpy(&ar, rowAr + l, sizeof ar);
                    std::memcpy(&ai, rowAi + l, sizeof ai);
                    std::memcpy(&br, rowBr + l, sizeof br);
                    std::memcpy(&bi, rowBi + l, sizeof bi);
                    const V dr = ar - br;
                    const V di = ai - bi;
                    ar += br;
                    ai += bi;
                    br = dr * wr - di * wi;
                    bi = dr * wi + di * wr;
                    std::memcpy(rowAr + l, &ar, sizeof ar);
                    std::memcpy(rowAi + l, &ai, sizeof ai);
                    std::memcpy(rowBr + l, &br, sizeof br);
                    std::memcpy(rowBi + l, &bi, sizeof bi);
                });
            }
        }
    }
}

template <typename V, int Lanes>
[[gnu::always_inline]] inline void LFFT::HalfInverse(double* re, double* im) const {
    const unsigned long M = N_ / 2;
    for (unsigned long half = 1; half < M; half <<= 1) {
        const unsigned long step = N_ / (2 * half);
        for (unsigned long start = 0; start < M; start += 2 * half) {
            for (unsigned long j = 0; j < half; ++j) {
                const double wr = cos_[j * step];
                const double wi = sin_[j * step];
                double* rowAr = re + (start + j) * Lanes;
                double* rowAi = im + (start + j) * Lanes;
                double* rowBr = rowAr + half * Lanes;
                double* rowBi = rowAi + half * Lanes;
                ForLaneGroups<V, Lanes>([&](int l) {
                    V ar, ai, br, bi;
                    std::memcpy(&ar, rowAr + l, sizeof ar);
                    std::memcpy(&ai, rowAi + l, sizeof ai);
                    std::memcpy(&br, rowBr + l, sizeof br);
                    std::memcpy(&bi, rowBi + l, sizeof bi);
                    const V tr = br * wr - bi * wi;
                    const V ti = br * wi + bi * wr;
                    br = ar - tr;
                    bi = ai - ti;
                    ar += tr;
                    ai += ti;
                    std::memcpy(rowAr + l, &ar, sizeof ar);
                    std::memcpy(rowAi + l, &ai, sizeof ai);
                    std::memcpy(rowBr + l, &br, sizeof br);
                    std::memcpy(rowBi + l, &bi, sizeof bi);
                });
            }
        }
    }
}

// With z[n] = x[2n] + i x[2n + 1] and Z its N/2-point transform, the even and odd halves of x
// have the spectra E[k] = (Z[k] + conj Z[M - k]) / 2 and O[k] = (Z[k] - conj Z[M - k]) / 2i,
// and X[k] = E[k] + e^(-2 pi i k / N) O[k], X[M - k] = conj E[k] - e^(2 pi i k / N) conj O[k].
template <typename V, int Lanes>
[[gnu::always_inline]] inline void LFFT::RealForward(double* re, double* im, double* specRe,
                                                     double* specIm,
                                                     unsigned long specStride) const {
    const unsigned long M = N_ / 2;
    HalfForward<V, Lanes>(re, im);
    ForLaneGroups<V, Lanes>([&](int l) {
        // Bins 0 and M are real.
        V zr, zi;
        std::memcpy(&zr, re + l, sizeof zr);
        std::memcpy(&zi, im + l, sizeof zi);
        const V x0 = 2 * (zr + zi);
        const V xm = 2 * (zr - zi);
        const V zero = zr - zr;
        std::memcpy(specRe + l, &x0, sizeof x0);
        std::memcpy(specIm + l, &zero, sizeof zero);
        std::memcpy(specRe + M * specStride + l, &xm, sizeof xm);
        std::memcpy(specIm + M * specStride + l, &zero, sizeof zero);
    });
    for (unsigned long k = 1; k < M / 2; ++k) {
        const double c = cos_[k];
        const double s = sin_[k];
        const double* rowAr = re + HalfReversed(k) * Lanes;
        const double* rowAi = im + HalfReversed(k) * Lanes;
        const double* rowBr = re + HalfReversed(M - k) * Lanes;
        const double* rowBi = im + HalfReversed(M - k) * Lanes;
        double* xkr = specRe + k * specStride;
        double* xki = specIm + k * specStride;
        double* xmr = specRe + (M - k) * specStride;
        double* xmi = specIm + (M - k) * specStride;
        ForLaneGroups<V, Lanes>([&](int l) {
            V ar, ai, br, bi;
            std::memcpy(&ar, rowAr + l, sizeof ar);
            std::memcpy(&ai, rowAi + l, sizeof ai);
            std::memcpy(&br, rowBr + l, sizeof br);
            std::memcpy(&bi, rowBi + l, sizeof bi);
            const V er = ar + br;
            const V ei = ai - bi;
            const V odr = ai + bi;
            const V odi = br - ar;
            const V tr = c * odr + s * odi;
            const V ti = c * odi - s * odr;
            const V kr = er + tr, ki = ei + ti, mr = er - tr, mi = ti - ei;
            std::memcpy(xkr + l, &kr, sizeof kr);
            std::memcpy(xki + l, &ki, sizeof ki);
            std::memcpy(xmr + l, &mr, sizeof mr);
            std::memcpy(xmi + l, &mi, sizeof mi);
        });
    }
    if (M >= 2) {
        // e^(-i pi / 2) = -i: X[M/2] = conj Z[M/2].
        const double* rowR = re + HalfReversed(M / 2) * Lanes;
        const double* rowI = im + HalfReversed(M / 2) * Lanes;
        ForLaneGroups<V, Lanes>([&](int l) {
            V zr, zi;
            std::memcpy(&zr, rowR + l, sizeof zr);
            std::memcpy(&zi, rowI + l, sizeof zi);
            const V xr = 2 * zr, xi = -2 * zi;
            std::memcpy(specRe + (M / 2) * specStride + l, &xr, sizeof xr);
            std::memcpy(specIm + (M / 2) * specStride + l, &xi, sizeof xi);
        });
    }
}

// The inverse builds Z'[k] = (X[k] + conj X[M - k]) + i e^(2 pi i k / N) (X[k] - conj X[M - k]),
// whose unscaled N/2-point inverse is x[2n] + i x[2n + 1].
template <typename V, int Lanes>
[[gnu::always_inline]] inline void LFFT::RealInverse(const double* specRe, const double* specIm,
                                                     unsigned long specStride, double* re,
                                                     double* im) const {
    const unsigned long M = N_ / 2;
    ForLaneGroups<V, Lanes>([&](int l) {
        // Bins 0 and M are real.
        V ar, br;
        std::memcpy(&ar, specRe + l, sizeof ar);
        std::memcpy(&br, specRe + M * specStride + l, sizeof br);
        const V zr = ar + br, zi = ar - br;
        std::memcpy(re + l, &zr, sizeof zr);
        std::memcpy(im + l, &zi, sizeof zi);
    });
    for (unsigned long k = 1; k < M / 2; ++k) {
        const double c = cos_[k];
        const double s = sin_[k];
        const double* rowAr = specRe + k * specStride;
        const double* rowAi = specIm + k * specStride;
        const double* rowBr = specRe + (M - k) * specStride;
        const double* rowBi = specIm + (M - k) * specStride;
        double* zkr = re + HalfReversed(k) * Lanes;
        double* zki = im + HalfReversed(k) * Lanes;
        double* zmr = re + HalfReversed(M - k) * Lanes;
        double* zmi = im + HalfReversed(M - k) * Lanes;
        ForLaneGroups<V, Lanes>([&](int l) {
            V ar, ai, br, bi;
            std::memcpy(&ar, rowAr + l, sizeof ar);
            std::memcpy(&ai, rowAi + l, sizeof ai);
            std::memcpy(&br, rowBr + l, sizeof br);
            std::memcpy(&bi, rowBi + l, sizeof bi);
            const V sr = ar + br;
            const V si = ai - bi;
            const V dr = ar - br;
            const V di = ai + bi;
            const V tr = dr * s + di * c;
            const V ti = dr * c - di * s;
            const V kr = sr - tr, ki = si + ti, mr = sr + tr, mi = ti - si;
            std::memcpy(zkr + l, &kr, sizeof kr);
            std::memcpy(zki + l, &ki, sizeof ki);
            std::memcpy(zmr + l, &mr, sizeof mr);
            std::memcpy(zmi + l, &mi, sizeof mi);
        });
    }
    if (M >= 2) {
        const double* rowR = specRe + (M / 2) * specStride;
        const double* rowI = specIm + (M / 2) * specStride;
        ForLaneGroups<V, Lanes>([&](int l) {
            V xr, xi;
            std::memcpy(&xr, rowR + l, sizeof xr);
            std::memcpy(&xi, rowI + l, sizeof xi);
            const V zr = 2 * xr, zi = -2 * xi;
            std::memcpy(re + HalfReversed(M / 2) * Lanes + l, &zr, sizeof zr);
            std::memcpy(im + HalfReversed(M / 2) * Lanes + l, &zi, sizeof zi);
        });
    }
    HalfInverse<V, Lanes>(re, im);
}
