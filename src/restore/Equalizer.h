#pragma once

#include "restore/FiltFFT.h"
#include "sound/SoundSource.h"

#include <array>
#include <vector>

// Settings of the equaliser: one gain byte per bin of a 4096-point transform at the stream's
// rate (bin k is k * rate / 4096 Hz); a byte v is a linear gain of v / 100.
class LSPEq : public LSoundProcess {
public:
    LSPEq() { curve.fill(100); }
    explicit LSPEq(const std::array<unsigned char, 2048>& gains) : curve(gains) {}

    LSoundSource OpenSource(LSoundSource& source) override;

    std::array<unsigned char, 2048> curve;
};

// Applies the equaliser curve as a linear-phase FIR filter of 4095 taps. The filter's delay of
// 2047 frames is cancelled by reading ahead, so output frame n is the filtered source frame n.
// Reads up to 10240 frames beyond the output position.
class LSRCEq : public LSoundProcessBase {
public:
    static constexpr int kTaps = 4095;
    static constexpr int kDelay = 2047;
    static constexpr int kChunk = 8192;
    static constexpr int kHistory = kTaps;                  // frames kept before each chunk
    static constexpr int kBufferFrames = kHistory + kChunk; // 12287

    LSRCEq(LSoundSource& source, const LSPEq& eq);

    void Read(int* buffer, int frames) override;
    int GetPositionSample() const override;
    void Seek(int frame) override;

    // The 4095 coefficients of a curve, symmetric about coefficient 2047.
    static std::vector<double> ImpulseResponse(const std::array<unsigned char, 2048>& curve);

private:
    int* Frame(int frame) { return buffer_.data() + static_cast<long>(frame) * channels_; }
    void FillFrom(int firstFrame, int count);
    void PrimeFilters();
    // Filters the chunk in buffer frames 4095..12286 into `filtered_`.
    void FilterChunk();

    std::vector<int> buffer_;   // kBufferFrames interleaved frames
    std::vector<int> filtered_; // the current chunk, filtered
    int pos_ = 0;               // frames of the current chunk already handed out
    std::vector<LFiltFFT> filters_;
};
