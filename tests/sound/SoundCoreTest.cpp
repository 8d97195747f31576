#include "sound/AudioBuffer.h"
#include "sound/SampleFormat.h"
#include "sound/SoundSink.h"
#include "sound/SoundSource.h"
#include "sound/SoundTime.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// A source of a known ramp: frame i of channel c holds (i + 1) * 16 + c, zeros outside.
class RampSource : public LSoundSourceBase {
public:
    RampSource(int frames, unsigned char channels, int* destroyed = nullptr)
        : LSoundSourceBase(44100, channels, 524272), frames_(frames), destroyed_(destroyed)
    {
    }
    ~RampSource() override
    {
        if (destroyed_)
            ++*destroyed_;
    }
    void Read(int* buffer, int frames) override
    {
        for (int f = 0; f < frames; ++f, ++position_)
            for (int c = 0; c < channels_; ++c)
                buffer[f * channels_ + c] =
                    position_ >= 0 && position_ < frames_ ? (position_ + 1) * 16 + c : 0;
    }
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return frames_; }
    void Seek(int frame) override { position_ = frame; }

private:
    int frames_;
    int position_ = 0;
    int* destroyed_;
};

std::string Text(const LSoundTime& time)
{
    char text[32];
    time._GetText(text);
    return text;
}

std::string Text2(const LSoundTime& time)
{
    char text[32];
    time._GetText2(text);
    return text;
}

LSoundTime Parse(const char* text)
{
    LSoundTime time;
    time.SetText(text);
    return time;
}

} // namespace

TEST(SoundSource, ReadContractGivesZerosOutsideTheStreamAndAlwaysAdvances)
{
    LSoundSource source(new RampSource(1000, 2));
    source->Seek(-100);
    std::vector<int> buffer(300 * 2, -1);
    source->Read(buffer.data(), 300);
    for (int f = 0; f < 100; ++f)
        EXPECT_EQ(buffer[f * 2], 0);
    EXPECT_EQ(buffer[100 * 2], 16);
    EXPECT_EQ(buffer[299 * 2 + 1], 200 * 16 + 1);
    EXPECT_EQ(source->GetPositionSample(), 200);

    source->Seek(990);
    source->Read(buffer.data(), 20);
    EXPECT_EQ(buffer[9 * 2], 1000 * 16);
    EXPECT_EQ(buffer[10 * 2], 0);
    EXPECT_EQ(source->GetPositionSample(), 1010);
}

TEST(SoundSource, HandlesCountHoldersAndNeverHoldNothing)
{
    LSoundSource empty;
    EXPECT_EQ(empty->GetError(), sndErrClosed);
    EXPECT_EQ(empty->GetEndSample(), 0);
    int silence[4] = {1, 1, 1, 1};
    empty->Read(silence, 4);
    EXPECT_EQ(silence[3], 0);

    int destroyed = 0;
    {
        LSoundSource a(new RampSource(10, 1, &destroyed));
        LSoundSource b = a;
        a = a;
        a.Close();
        EXPECT_EQ(a->GetError(), sndErrClosed);
        EXPECT_EQ(destroyed, 0);
        EXPECT_EQ(b->GetEndSample(), 10);
        b = b;
        EXPECT_EQ(b->GetEndSample(), 10);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(SoundSource, StagesTakeTheInnerFormatAndReportAnInnerError)
{
    struct Pass : LSoundProcessBase {
        using LSoundProcessBase::LSoundProcessBase;
        void Read(int* buffer, int frames) override { inner_->Read(buffer, frames); }
    };
    LSoundSource ramp(new RampSource(50, 2));
    LSoundSource stage(new Pass(ramp));
    EXPECT_EQ(stage->GetChannels(), 2);
    EXPECT_EQ(stage->GetEndSample(), 50);
    EXPECT_EQ(stage->GetError(), sndErrNone);

    LSoundSource failed;
    LSoundSource overFailed(new Pass(failed));
    EXPECT_EQ(overFailed->GetError(), sndErrInput);

    LSoundSource bad(new RampSource(1, 0));
    EXPECT_EQ(bad->GetError(), sndErrFormat);
    EXPECT_EQ(bad->GetChannels(), 1);
}

TEST(SoundSink, ClosedHandlesSwallowWritesAndStubsCount)
{
    LSoundSink none;
    EXPECT_EQ(none->GetError() & 1, 1);
    LSoundSink stub = LSoundSinkStub{48000, 2}.OpenSink();
    int buffer[20] = {};
    stub->Write(buffer, 10);
    stub->Write(buffer, 5);
    EXPECT_EQ(stub->GetPosition(), 15);
    EXPECT_EQ(stub->GetSampleRate(), 48000);
    stub.Close();
    EXPECT_EQ(stub->GetError() & 1, 1);
}

TEST(SoundTime, TextsAndConversions)
{
    EXPECT_EQ(Text(LSoundTime(3723004)), "1:02:03.004");
    EXPECT_EQ(Text2(LSoundTime(3723004)), "1:02:03.00");
    EXPECT_EQ(Text(LSoundTime(-250)), "-0:00:00.250");
    EXPECT_EQ(Text2(LSoundTime(59996)), "0:01:00.00");

    LSoundTime time(77);
    time.SetSamples(44100, 44100);
    EXPECT_EQ(time.GetMS(), 1000);
    time.SetSamples(5, 0);
    EXPECT_EQ(time.GetMS(), 1000);
    EXPECT_EQ(LSoundTime(2500).GetSamples(44100), 110250);
    // Large positions must not overflow in the intermediate product.
    EXPECT_EQ(LSoundTime::FromSamples(2000000000, 48000).GetMS(), 41666666);
}

TEST(SoundTime, SetTextParsesWhatUsersType)
{
    EXPECT_EQ(Parse("1:30").GetMS(), 90000);
    EXPECT_EQ(Parse("1:02:03.5").GetMS(), 3723500);
    EXPECT_EQ(Parse("-0.25").GetMS(), -250);
    EXPECT_EQ(Parse("12").GetMS(), 12000);
    EXPECT_EQ(Parse("0.1239").GetMS(), 123);
    EXPECT_EQ(Parse("1.2.3").GetMS(), 1230);
    EXPECT_EQ(Parse("0:00:05:20").GetMS(), 5200);
}

TEST(SampleFormat, ConvertersRoundAndDoNotClip)
{
    const uint8_t le[4] = {0xFF, 0x7F, 0x00, 0x80};
    int values[2];
    ConvertSamplesIn<LSF16>(values, le, 2);
    EXPECT_EQ(values[0], 524272);
    EXPECT_EQ(values[1], -524288);

    uint8_t out[4];
    const int back[2] = {524272 + 7, -8};
    ConvertSamplesOut<LSF16>(out, back, 2);
    EXPECT_EQ(out[0], 0xFF);
    EXPECT_EQ(out[1], 0x7F);
    EXPECT_EQ(out[2], 0x00); // -8 rounds to 0
    EXPECT_EQ(out[3], 0x00);

    const int tooLoud = 524288; // wraps: the converters never clip
    ConvertSamplesOut<LSF16>(out, &tooLoud, 1);
    EXPECT_EQ(out[1], 0x80);

    const uint8_t be[2] = {0x12, 0x34};
    ConvertSamplesIn<LSFBE16>(values, be, 1);
    EXPECT_EQ(values[0], 0x1234 * 16);

    const uint8_t u8[3] = {0, 128, 255};
    int eight[3];
    ConvertSamplesIn<LSFU8>(eight, u8, 3);
    EXPECT_EQ(eight[0], -524288);
    EXPECT_EQ(eight[1], 0);
    EXPECT_EQ(eight[2], 127 * 4096);
    uint8_t u8out[3];
    ConvertSamplesOut<LSFU8>(u8out, eight, 3);
    EXPECT_EQ(u8out[0], 0);
    EXPECT_EQ(u8out[1], 128);
    EXPECT_EQ(u8out[2], 255);
}

TEST(Levels, DecibelEdgesAndTables)
{
    std::vector<int> buffer(100, 0);
    EXPECT_EQ(GetBufferPeakDBChan(0, buffer.data(), 100, 1), -127);
    EXPECT_EQ(GetBufferRMSDBChan(0, buffer.data(), 100, 1), -127);
    buffer[10] = 131072;
    EXPECT_EQ(GetBufferPeakDBChan(0, buffer.data(), 100, 1), 0);
    buffer[10] = -524272;
    EXPECT_EQ(GetBufferPeakDBChan(0, buffer.data(), 100, 1), 12);

    // Channel 1 of a stereo buffer only.
    std::vector<int> stereo = {100, -7000, 200, 3000};
    EXPECT_EQ(GetBufferPeakChan(1, stereo.data(), 2, 2), 7000);
    EXPECT_EQ(GetBufferPeak(stereo.data(), 2, 2), 7000);

    // A full-scale square wave: mean square of (x >> 5)^2 is 16384^2 and does not overflow.
    std::vector<int> square(4096);
    for (size_t i = 0; i < square.size(); ++i)
        square[i] = i % 2 ? 524288 : -524288;
    EXPECT_EQ(GetBufferMeanSquare(square.data(), 4096, 1), 16384u * 16384u);
    EXPECT_EQ(GetBufferRMSDBChan(0, square.data(), 4096, 1), 15);

    const auto& tables = LDB::GetTable();
    EXPECT_EQ(tables.AmplitudeTable[0], 16777216);
    EXPECT_EQ(tables.PowerTable[10], 167772160);
    EXPECT_EQ(tables.AmplitudeTable[-127], 0);
    EXPECT_EQ(tables.AmplitudeTable[-128], 0);
    EXPECT_EQ(tables.PowerTable[127], 2147483647);
    EXPECT_EQ(tables.AmplitudeTable[-20], 1677722);

    LDBMC levels;
    EXPECT_EQ(levels.GetMonoDB(), -127);
    levels.count = 2;
    levels.values[0] = -20;
    levels.values[1] = -6;
    EXPECT_EQ(levels.GetMonoDB(), -6);

    int gained[2] = {1000, -1000};
    GainAudioBufferQuick(256, gained, 2);
    EXPECT_EQ(gained[0], 500);
    EXPECT_EQ(gained[1], -500);
}
