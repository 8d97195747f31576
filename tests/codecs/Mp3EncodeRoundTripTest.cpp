// Audio written into the MP3 sink comes back out of the MP3 file: the sink runs the LAME
// encoder with the settings' command line, and the file is decoded with mpg123 and with this
// program's own decoder.
#include "Mp3TestUtil.h"

#include "codecs/MP3File.h"
#include "codecs/Mp3EncodeSink.h"
#include "jobs/ProcessInterfaceVoid.h"
#include "sound/SourceToSink.h"
#include "support/BufferSource.h"
#include "support/TempHome.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>
#include <vector>

namespace {

constexpr double kFullScale = 524288;

// Notes of a scale, each starting loud and dying away, over a steady bass tone, melody and
// bass panned apart: transients and a changing spectrum, unlike a steady tone.
std::vector<int> MusicLike(int rate, int channels, int frames) {
    const double notes[] = {220, 262, 330, 294, 392, 247};
    std::vector<int> samples(static_cast<size_t>(frames) * channels);
    for (int n = 0; n < frames; ++n) {
        const double t = static_cast<double>(n) / rate, inNote = std::fmod(t, 0.25);
        const double pitch = notes[static_cast<size_t>(t * 4) % std::size(notes)];
        const double melody =
            std::exp(-3 * inNote) * (std::sin(2 * std::numbers::pi * pitch * t) +
                                     std::sin(4 * std::numbers::pi * pitch * t) / 2);
        const double bass = std::sin(2 * std::numbers::pi * 110 * t);
        for (int c = 0; c < channels; ++c) {
            const double pan = channels == 1 ? 0.5 : (c == 0 ? 0.7 : 0.3);
            samples[static_cast<size_t>(n) * channels + c] = static_cast<int>(
                std::lround(0.25 * kFullScale * (pan * melody + (1 - pan) * bass)));
        }
    }
    return samples;
}

std::vector<int> Tone(int rate, int channels, int frames, double frequency) {
    LSoundSource source = MakeSineSource(rate, static_cast<unsigned char>(channels), frequency,
                                         0.5 * kFullScale, frames);
    return ReadFrames(source, frames);
}

struct Decoded {
    int rate = 0;
    int channels = 0;
    std::vector<int> samples;
};

Decoded DecodeWithMpg123(const std::string& path, int channels) {
    const std::string raw = RunCommand("mpg123 -q -e s16 -s " + ShellQuote(path) + " 2>/dev/null");
    Decoded out{0, channels, {}};
    for (size_t i = 0; i + 1 < raw.size(); i += 2)
        out.samples.push_back(int16_t(uint8_t(raw[i]) | uint8_t(raw[i + 1]) << 8) * 16);
    return out;
}

Decoded DecodeWithOwnDecoder(const std::string& path) {
    const LSoundSource source = LMP3File::OpenSource(path.c_str());
    EXPECT_EQ(source->GetError(), sndErrNone);
    return {source->GetSampleRate(), source->GetChannels(), ReadToEnd(source)};
}

// What the encoder kept of a signal, for one channel.
struct Comparison {
    int lag;            // decoded frame n + lag holds original frame n
    double correlation; // over the frames both hold, less 0.1 s at either end
    double levelDB;     // decoded RMS against original RMS
    double toneRatio;   // decoded against original amplitude at the test frequency (0: none)
};

double Correlation(const std::vector<double>& a, const std::vector<double>& b) {
    double ab = 0, aa = 0, bb = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        ab += a[i] * b[i];
        aa += a[i] * a[i];
        bb += b[i] * b[i];
    }
    return aa > 0 && bb > 0 ? ab / std::sqrt(aa * bb) : 0;
}

// Finds the encoder's delay on channel 0 by cross-correlation, then compares every channel
// over the frames both streams hold.
std::vector<Comparison> Compare(const std::vector<int>& original, const Decoded& decoded,
                                int channels, int rate, double frequency) {
    const int originalFrames = static_cast<int>(original.size()) / channels;
    const int decodedFrames = static_cast<int>(decoded.samples.size()) / channels;
    const int probeStart = rate / 2;
    const int probeLength = 4096;
    const std::vector<double> probe = ChannelValues(original, channels, 0, probeStart, probeLength);
    int bestLag = 0;
    double best = -2;
    for (int lag = -64; lag <= 2400; ++lag) {
        if (probeStart + lag + probeLength > decodedFrames) break;
        const double c = Correlation(
            probe, ChannelValues(decoded.samples, channels, 0, probeStart + lag, probeLength));
        if (c > best) {
            best = c;
            bestLag = lag;
        }
    }
    const int edge = rate / 10;
    const int first = edge;
    const int count = std::min(originalFrames, decodedFrames - bestLag) - 2 * edge;
    std::vector<Comparison> result;
    for (int c = 0; c < channels; ++c) {
        const std::vector<double> a = ChannelValues(original, channels, c, first, count);
        const std::vector<double> b =
            ChannelValues(decoded.samples, channels, c, first + bestLag, count);
        const double tone =
            frequency > 0 ? ToneAmplitude(b, rate, frequency) / ToneAmplitude(a, rate, frequency)
                          : 0;
        result.push_back({bestLag, Correlation(a, b), DB(RMS(b) / RMS(a)), tone});
    }
    return result;
}

class Mp3EncodeRoundTripTest : public ::testing::Test {
protected:
    // Pumps the samples into the MP3 sink and finishes the file.
    std::string Encode(const char* name, const LMp3EncodeSettings& settings,
                       const std::vector<int>& samples, int rate, int channels,
                       int expectedSinkChannels) {
        const std::string path = (home_.Path() / name).string();
        LPRSourceToSink job;
        job.source = MakeBufferSource(samples, rate, static_cast<unsigned char>(channels));
        job.sink = OpenMp3Sink(path.c_str(), settings, rate, static_cast<unsigned char>(channels));
        EXPECT_EQ(job.sink->GetError(), 0);
        EXPECT_EQ(job.sink->GetChannels(), expectedSinkChannels);
        LProcessInterfaceVoid quiet;
        EXPECT_EQ(Process(quiet, job), PROCESS_DONE);
        if (job.sink->GetSampleRate() == rate) {
            EXPECT_EQ(job.sink->GetPosition(), static_cast<int>(samples.size()) / channels);
        }
        job.sink.Close();
        return path;
    }

    // Decodes the file both ways and checks each channel against `expected`.
    void CheckBothDecoders(const std::string& path, const std::vector<int>& expected, int rate,
                           int channels, double frequency) {
        const Decoded own = DecodeWithOwnDecoder(path);
        EXPECT_EQ(own.rate, rate);
        ASSERT_EQ(own.channels, channels);
        const Decoded reference = DecodeWithMpg123(path, channels);
        for (const Decoded* decoded : {&reference, &own}) {
            const char* who = decoded == &own ? "own decoder" : "mpg123";
            for (const Comparison& c : Compare(expected, *decoded, channels, rate, frequency)) {
                std::printf("%-12s %-11s lag %4d correlation %.5f level %+.3f dB\n",
                            path.substr(path.rfind('/') + 1).c_str(), who, c.lag, c.correlation,
                            c.levelDB);
                EXPECT_GT(c.correlation, 0.99) << who << ", lag " << c.lag;
                EXPECT_LT(std::abs(c.levelDB), 1.0) << who;
                if (frequency > 0) {
                    EXPECT_NEAR(c.toneRatio, 1.0, 0.12) << who;
                }
            }
        }
    }

    static LMp3EncodeSettings Settings() {
        LMp3EncodeSettings settings{LMp3EncodeSettings::DefaultsTag{}};
        settings.channelMode = LMp3EncodeSettings::modeJoint;
        return settings;
    }

    TempHome home_;
};

TEST_F(Mp3EncodeRoundTripTest, ToneAtCbr128AndMusicAtVbr) {
    const std::vector<int> tone = Tone(44100, 2, 88200, 1000);
    CheckBothDecoders(Encode("tone.mp3", Settings(), tone, 44100, 2, 2), tone, 44100, 2, 1000);

    const std::vector<int> music = MusicLike(44100, 2, 88200);
    LMp3EncodeSettings vbr = Settings();
    vbr.constantBitRate = 0;
    vbr.vbrMinBitRate = 32;
    vbr.vbrMaxBitRate = 256;
    vbr.vbrQuality = 2;
    CheckBothDecoders(Encode("vbr.mp3", vbr, music, 44100, 2, 2), music, 44100, 2, 0);
}

TEST_F(Mp3EncodeRoundTripTest, MonoSourceAndMonoDownmix) {
    const std::vector<int> music = MusicLike(44100, 1, 88200);
    CheckBothDecoders(Encode("mono.mp3", Settings(), music, 44100, 1, 1), music, 44100, 1, 0);

    // "Mono" chosen for a stereo source: both channels are mixed into one. The tone is at
    // full amplitude on the left and half on the right, so the mix holds three quarters.
    LMp3EncodeSettings mono = Settings();
    mono.channelMode = LMp3EncodeSettings::modeMono;
    const std::vector<int> stereo = Tone(44100, 2, 88200, 1000);
    std::vector<int> mixed(stereo.size() / 2);
    for (size_t i = 0; i < mixed.size(); ++i)
        mixed[i] = (stereo[2 * i] + stereo[2 * i + 1]) / 2;
    CheckBothDecoders(Encode("downmix.mp3", mono, stereo, 44100, 2, 2), mixed, 44100, 1, 1000);
}

TEST_F(Mp3EncodeRoundTripTest, LowestBitRatesGiveMonoAtLowRates) {
    // VBR from 8 to 16 kbps: the pump mixes the stereo source down to mono at 22,050 Hz, and
    // the encoder may lower the rate further.
    LMp3EncodeSettings low = Settings();
    low.constantBitRate = 0;
    low.vbrMinBitRate = 8;
    low.vbrMaxBitRate = 16;
    const std::string path = Encode("low.mp3", low, Tone(44100, 2, 88200, 1000), 44100, 2, 1);
    const Decoded decoded = DecodeWithOwnDecoder(path);
    EXPECT_EQ(decoded.channels, 1);
    EXPECT_LE(decoded.rate, 22050);
    const int second = decoded.rate;
    ASSERT_GE(static_cast<int>(decoded.samples.size()), second * 3 / 2);
    EXPECT_NEAR(RisingCrossings(ChannelValues(decoded.samples, 1, 0, second / 4, second)), 1000,
                10);
}

TEST_F(Mp3EncodeRoundTripTest, SinkOfAMissingEncoderIsAnErrorSink) {
    const char* oldPath = std::getenv("PATH");
    const std::string saved = oldPath ? oldPath : "";
    setenv("PATH", home_.Path().c_str(), 1);
    const LSoundSink sink = OpenMp3Sink((home_.Path() / "x.mp3").c_str(), Settings(), 44100, 2);
    setenv("PATH", saved.c_str(), 1);
    EXPECT_EQ(sink->GetError(), 1);
}

} // namespace
