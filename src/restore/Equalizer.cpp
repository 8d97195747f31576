#include "restore/Equalizer.h"

#include "restore/FFT.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

namespace {

constexpr int kBins = 4096;
constexpr unsigned long kBlock = 128;

} // namespace

LSoundSource LSPEq::OpenSource(LSoundSource& source) {
    if (source->GetError() != sndErrNone) return source;
    return LSoundSource(new LSRCEq(source, *this));
}

std::vector<double> LSRCEq::ImpulseResponse(const std::array<unsigned char, 2048>& curve) {
    std::vector<double> re(kBins, 0.0), im(kBins, 0.0);
    re[0] = curve[0];
    for (int k = 1; k < 2048; ++k) {
        re[k] = curve[k];
        re[kBins - k] = curve[k];
    }
    re[2048] = curve[2047];
    LFFT(12).DoInverseFFT(re.data(), im.data());

    // Centre the response on coefficient 2047; 1 / (4096 * 100) undoes the transform size and
    // the byte scale of 100 for unity.
    std::vector<double> coeffs(kTaps);
    for (int j = 0; j < kTaps; ++j)
        coeffs[j] = re[(2049 + j) % kBins] * 2.44140625e-6;
    return coeffs;
}

LSRCEq::LSRCEq(LSoundSource& source, const LSPEq& eq)
    : LSoundProcessBase(source), buffer_(static_cast<size_t>(kBufferFrames) * channels_, 0),
      filtered_(static_cast<size_t>(kChunk) * channels_, 0), filters_(channels_) {
    const std::vector<double> coeffs = ImpulseResponse(eq.curve);
    // No output reaches further than the input's largest value times the sum of the response's
    // magnitudes.
    double reach = 0;
    for (double c : coeffs)
        reach += std::abs(c);
    if (reach > 1)
        maxAmplitude_ = static_cast<int>(std::min(maxAmplitude_ * reach, double(INT_MAX / 4)));
    for (LFiltFFT& filter : filters_) {
        filter.SetTaps(kTaps - 1);
        filter.SetBlkSize(kBlock);
        filter.SetCoeff(coeffs.data(), kTaps - 1);
    }
    // Frames 0..2046 stay zero: the start of the stream is preceded by silence.
    FillFrom(kDelay, kHistory - kDelay + kChunk);
    PrimeFilters();
    FilterChunk();
}

void LSRCEq::FillFrom(int firstFrame, int count) {
    while (count > 0) {
        const int n = std::min(count, kChunk);
        inner_->Read(Frame(firstFrame), n);
        firstFrame += n;
        count -= n;
    }
}

// Runs the filters over the 4094 frames before the first one filtered for output, so that the
// output depends on source frames only.
void LSRCEq::PrimeFilters() {
    for (int c = 0; c < channels_; ++c)
        filters_[c].Initialize(buffer_.data() + c, kHistory - 1, channels_);
}

// Output frame n comes from filtering up to buffer frame 4094 + n: the centre of the symmetric
// response falls 2047 frames earlier, on the matching source frame. The whole chunk is filtered
// at once, so that the filters work in whole blocks whatever the sizes of the reads.
void LSRCEq::FilterChunk() {
    const int* in = Frame(kHistory - 1);
    for (int c = 0; c < channels_; ++c)
        filters_[c].ApplyFilter(filtered_.data() + c, in + c, kChunk, channels_);
    pos_ = 0;
}

void LSRCEq::Read(int* buffer, int frames) {
    while (frames > 0) {
        if (pos_ == kChunk) {
            std::memmove(Frame(0), Frame(kChunk), sizeof(int) * kHistory * channels_);
            FillFrom(kHistory, kChunk);
            FilterChunk();
        }
        const int n = std::min(frames, kChunk - pos_);
        std::copy_n(filtered_.data() + static_cast<long>(pos_) * channels_, n * channels_, buffer);
        pos_ += n;
        buffer += static_cast<long>(n) * channels_;
        frames -= n;
    }
}

int LSRCEq::GetPositionSample() const {
    return inner_->GetPositionSample() - (kChunk + kDelay + 1 - pos_);
}

void LSRCEq::Seek(int frame) {
    inner_->Seek(frame - kDelay);
    FillFrom(0, kBufferFrames);
    PrimeFilters();
    FilterChunk();
}
