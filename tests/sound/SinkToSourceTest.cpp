#include "sound/SinkToSource.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

namespace {

constexpr int kChannels = 2;
// Frames that fill the bucket more than twice.
constexpr int kFrames = 3 * static_cast<int>(LSinkToSourceBase::kBucketBytes / (4 * kChannels));

} // namespace

TEST(SinkToSource, ReaderGetsEverythingThenZerosWhenTheWriterFinishes) {
    LSinkToSource pipe(44100, kChannels, 524272);
    LSoundSource source = pipe.OpenSource();
    EXPECT_EQ(source->GetSampleRate(), 44100);

    std::thread writer([sink = pipe.OpenSink()]() mutable {
        std::vector<int> block(4096 * kChannels);
        for (int frame = 0; frame < kFrames;) {
            const int frames = std::min(4096, kFrames - frame);
            for (int i = 0; i < frames * kChannels; ++i)
                block[i] = frame * kChannels + i;
            sink->Write(block.data(), frames);
            frame += frames;
        }
        EXPECT_EQ(sink->GetPosition(), kFrames);
    });

    std::vector<int> block(1000 * kChannels);
    int expected = 0;
    bool intact = true;
    for (int frame = 0; frame < kFrames; frame += 1000) {
        const int frames = std::min(1000, kFrames - frame);
        source->Read(block.data(), frames);
        for (int i = 0; i < frames * kChannels; ++i)
            intact = intact && block[i] == expected++;
    }
    EXPECT_TRUE(intact);
    writer.join();

    EXPECT_FALSE(source->IsStreaming());
    std::fill(block.begin(), block.end(), 7);
    source->Read(block.data(), 1000);
    EXPECT_EQ(block[0], 0);
    EXPECT_EQ(block[1999], 0);
}

TEST(SinkToSource, WriterDropsDataOnceTheReaderHasClosed) {
    LSinkToSource pipe(48000, kChannels, 524272);
    LSoundSink sink = pipe.OpenSink();
    LSoundSource source = pipe.OpenSource();
    EXPECT_TRUE(source->IsStreaming());

    std::thread reader([&source] {
        std::vector<int> block(100 * kChannels);
        source->Read(block.data(), 100);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        source.Close();
    });

    // More than the bucket holds: a writer kept waiting by the closed reader would hang here.
    std::vector<int> block(8192 * kChannels, 1);
    for (int frame = 0; frame < kFrames; frame += 8192)
        sink->Write(block.data(), 8192);
    EXPECT_EQ(sink->GetPosition(), (kFrames + 8191) / 8192 * 8192);
    reader.join();
}

TEST(SinkToSource, EndIsWhatCanBeReadNow) {
    LSinkToSource pipe(8000, 1, 524272);
    LSoundSource source = pipe.OpenSource();
    {
        LSoundSink sink = pipe.OpenSink();
        std::vector<int> block(300, 5);
        sink->Write(block.data(), 300);
        EXPECT_EQ(source->GetEndSample(), 300);
        EXPECT_TRUE(source->IsStreaming());
    }
    EXPECT_FALSE(source->IsStreaming());
    std::vector<int> out(500, -1);
    source->Read(out.data(), 500);
    EXPECT_EQ(out[299], 5);
    EXPECT_EQ(out[300], 0);
    EXPECT_EQ(source->GetEndSample(), 0);
}
