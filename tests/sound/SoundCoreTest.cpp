#include "sound/AudioBuffer.h"
#include "sound/SampleFormat.h"
#include "sound/SoundSink.h"
#include "sound/SoundSource.h"
#include "sound/SoundTime.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

// A source that counts its destruction.
class CountedSource : public LSoundSourceBase {
public:
    CountedSource(unsigned char channels, int& destroyed)
        : LSoundSourceBase(44100, channels, 524272), destroyed_(destroyed) {}
    ~CountedSource() override { ++destroyed_; }
    void Read(int* buffer, int frames) override { std::fill_n(buffer, frames * channels_, 0); }
    int GetPositionSample() const override { return 0; }
    int GetEndSample() const override { return 10; }

private:
    int& destroyed_;
};

} // namespace

TEST(SoundSource, HandlesCountHoldersAndAClosedOneIsASilentErrorSource) {
    LSoundSource empty;
    EXPECT_EQ(empty->GetError(), sndErrClosed);
    int silence[4] = {1, 1, 1, 1};
    empty->Read(silence, 4);
    EXPECT_EQ(silence[3], 0);

    int destroyed = 0;
    {
        LSoundSource a(new CountedSource(1, destroyed));
        LSoundSource b = a;
        a = a;
        a.Close();
        EXPECT_EQ(a->GetError(), sndErrClosed);
        EXPECT_EQ(destroyed, 0);
        b = b;
        EXPECT_EQ(b->GetEndSample(), 10);
    }
    EXPECT_EQ(destroyed, 1);

    LSoundSink sink;
    EXPECT_TRUE(sink->IsFailed());
    LSoundSource bad(new CountedSource(0, destroyed));
    EXPECT_EQ(bad->GetError(), sndErrFormat);
}

TEST(SoundTime, TextsAndUserInput) {
    const struct {
        int ms;
        const char* text;
        const char* text2;
    } texts[] = {{3723004, "1:02:03.004", "1:02:03.00"},
                 {-250, "-0:00:00.250", "-0:00:00.25"},
                 {59996, "0:00:59.996", "0:01:00.00"}};
    for (const auto& t : texts) {
        char text[32];
        LSoundTime(t.ms)._GetText(text);
        EXPECT_STREQ(text, t.text);
        LSoundTime(t.ms)._GetText2(text);
        EXPECT_STREQ(text, t.text2);
    }

    const std::pair<const char*, int> typed[] = {
        {"1:30", 90000}, {"1:02:03.5", 3723500}, {"-0.25", -250},     {"12", 12000},
        {"0.1239", 123}, {"1.2.3", 1230},        {"0:00:05:20", 5200}};
    for (const auto& [text, ms] : typed) {
        LSoundTime time;
        time.SetText(text);
        EXPECT_EQ(time.GetMS(), ms) << text;
    }

    EXPECT_EQ(LSoundTime(2500).GetSamples(44100), 110250);
    // Large positions must not overflow in the intermediate product.
    EXPECT_EQ(LSoundTime::FromSamples(2000000000, 48000).GetMS(), 41666666);
}

TEST(SampleFormat, ConvertersRoundAndSaturate) {
    const uint8_t le[4] = {0xFF, 0x7F, 0x00, 0x80};
    int values[2];
    ConvertSamplesIn<LSF16>(values, le, 2);
    EXPECT_EQ(values[0], 524272);
    EXPECT_EQ(values[1], -524288);

    uint8_t out[4];
    const int back[2] = {524272 + 7, -8};
    ConvertSamplesOut<LSF16>(out, back, 2);
    EXPECT_EQ(std::vector<uint8_t>(out, out + 4), (std::vector<uint8_t>{0xFF, 0x7F, 0, 0}))
        << "-8 rounds to 0";
    // Past the 16-bit range a sample saturates instead of wrapping around to the other sign.
    const int tooLoud[2] = {524288, -2000000};
    ConvertSamplesOut<LSF16>(out, tooLoud, 2);
    EXPECT_EQ(std::vector<uint8_t>(out, out + 4), (std::vector<uint8_t>{0xFF, 0x7F, 0, 0x80}));
    ConvertSamplesOut<LSFBE16>(out, tooLoud, 2);
    EXPECT_EQ(std::vector<uint8_t>(out, out + 4), (std::vector<uint8_t>{0x7F, 0xFF, 0x80, 0}));
    ConvertSamplesOut<LSFU8>(out, tooLoud, 2);
    EXPECT_EQ(out[0], 255);
    EXPECT_EQ(out[1], 0);

    const uint8_t be[2] = {0x12, 0x34};
    ConvertSamplesIn<LSFBE16>(values, be, 1);
    EXPECT_EQ(values[0], 0x1234 * 16);

    const uint8_t u8[3] = {0, 128, 255};
    int eight[3];
    ConvertSamplesIn<LSFU8>(eight, u8, 3);
    EXPECT_EQ(std::vector<int>(eight, eight + 3), (std::vector<int>{-524288, 0, 127 * 4096}));
    uint8_t u8out[3];
    ConvertSamplesOut<LSFU8>(u8out, eight, 3);
    EXPECT_EQ(std::vector<uint8_t>(u8out, u8out + 3), std::vector<uint8_t>(u8, u8 + 3));
}

TEST(Levels, DecibelsOfBuffersAndGain) {
    std::vector<int> buffer(100, 0);
    EXPECT_EQ(GetBufferPeakDBChan(0, buffer.data(), 100, 1), -127);
    EXPECT_EQ(GetBufferRMSDBChan(0, buffer.data(), 100, 1), -127);
    buffer[10] = 131072;
    EXPECT_EQ(GetBufferPeakDBChan(0, buffer.data(), 100, 1), 0);
    buffer[10] = -524272;
    EXPECT_EQ(GetBufferPeakDBChan(0, buffer.data(), 100, 1), 12);

    const std::vector<int> stereo = {100, -7000, 200, 3000};
    EXPECT_EQ(GetBufferPeakChan(0, stereo.data(), 2, 2), 200);

    // A full-scale square wave: mean square of (x >> 5)^2 is 16384^2 and does not overflow.
    std::vector<int> square(4096);
    for (size_t i = 0; i < square.size(); ++i)
        square[i] = i % 2 ? 524288 : -524288;
    EXPECT_EQ(GetBufferMeanSquare(square.data(), 4096, 1), 16384u * 16384u);
    EXPECT_EQ(GetBufferRMSDBChan(0, square.data(), 4096, 1), 15);

    EXPECT_EQ(LDB::GetTable().AmplitudeTable[-20], 1677722);
    EXPECT_EQ(LDB::GetTable().PowerTable[127], 2147483647) << "saturates";

    int gained[2] = {1000, -1000};
    GainAudioBufferQuick(256, gained, 2);
    EXPECT_EQ(gained[0], 500);
    EXPECT_EQ(gained[1], -500);
}
