// The pipe sink hands everything written to its command, in order, from its own thread; a
// command that stops reading fails the sink without holding up the writer, and its file is
// removed.
#include "codecs/Pipe16Sink.h"

#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int kChannels = 2;
// More than the sink's ring and the pipe together hold.
constexpr int kFrames = 1500000;

// The 16-bit value written for sample i.
int16_t Value(int i) {
    return static_cast<int16_t>(i * 7 % 65536 - 32768);
}

// Writes kFrames of the Value pattern in blocks of 8,192 frames.
void WritePattern(LSoundSinkBase& sink) {
    std::vector<int> block(8192 * kChannels);
    for (int frame = 0; frame < kFrames;) {
        const int frames = std::min(8192, kFrames - frame);
        for (int i = 0; i < frames * kChannels; ++i)
            block[i] = Value(frame * kChannels + i) * 16;
        sink.Write(block.data(), frames);
        frame += frames;
    }
}

TEST(Pipe16Sink, TheCommandGetsEverythingBigEndianInOrder) {
    TempHome home;
    const fs::path out = home.Path() / "out.raw";
    {
        LPipe16Sink sink(("cat > " + ShellQuote(out)).c_str(), 44100, kChannels, out.c_str());
        WritePattern(sink);
        EXPECT_FALSE(sink.IsFailed());
        EXPECT_EQ(sink.GetPosition(), kFrames);
    }
    std::ifstream in(out, std::ios::binary);
    const std::vector<unsigned char> bytes(std::istreambuf_iterator<char>(in), {});
    ASSERT_EQ(bytes.size(), size_t(kFrames) * kChannels * 2);
    size_t wrong = 0;
    for (size_t i = 0; i < bytes.size() / 2; ++i)
        wrong += static_cast<int16_t>(bytes[2 * i] << 8 | bytes[2 * i + 1]) != Value(int(i));
    EXPECT_EQ(wrong, 0u);
}

TEST(Pipe16Sink, ACommandThatStopsReadingFailsTheSinkAndLeavesNoFile) {
    TempHome home;
    const fs::path out = home.Path() / "out.raw";
    // Ends well or badly after a part of the input; or never reads.
    for (const std::string& command : {"head -c 100000 > " + ShellQuote(out),
                                      "head -c 100000 > " + ShellQuote(out) + "; exit 3",
                                      "echo x > " + ShellQuote(out) + "; exit 1"}) {
        {
            LPipe16Sink sink(command.c_str(), 44100, kChannels, out.c_str());
            WritePattern(sink);
            EXPECT_TRUE(sink.IsFailed()) << command;
        }
        EXPECT_FALSE(fs::exists(out)) << command;
    }
}

} // namespace
