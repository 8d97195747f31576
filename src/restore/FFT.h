#pragma once

#include <vector>

// Radix-2 complex transform of 2^order points, in place on separate real and imaginary arrays.
// The twiddle factors and the bit-reversal permutation are tables built once.
class LFFT {
public:
    explicit LFFT(unsigned long order);

    unsigned long GetSize() const { return N_; }

    // Forward transform, scaled by 1/N: X[k] = (1/N) sum x[n] e^(-2 pi i k n / N).
    void DoFFT(double* re, double* im) const;
    // Inverse transform, unscaled: x[n] = sum X[k] e^(+2 pi i k n / N).
    void DoInverseFFT(double* re, double* im) const;

private:
    void Permute(double* re, double* im) const;
    // Butterflies of every stage; sign -1 for the forward direction, +1 for the inverse.
    void Butterflies(double* re, double* im, double sign) const;

    unsigned long order_;
    unsigned long N_;
    std::vector<unsigned long> bitReverse_;
    std::vector<double> cos_; // cos(2 pi k / N)
    std::vector<double> sin_; // sin(2 pi k / N)
};
