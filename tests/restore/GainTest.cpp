#include "restore/Gain.h"

#include "support/BufferSource.h"

#include <gtest/gtest.h>

namespace {

const std::vector<int> kSamples = {1000, -1000, 3, -3, 524272, -524288, 7};

std::vector<int> Apply(int gainQ24) {
    LSoundSource source = MakeBufferSource(kSamples, 44100, 1);
    LSoundSource gained = LSPGain(gainQ24).OpenSource(source);
    return ReadAll(gained, static_cast<int>(kSamples.size()));
}

TEST(Gain, WorksInStepsOf1Over512) {
    // Halving shifts right, so odd negative values round down.
    EXPECT_EQ(Apply(0x800000), (std::vector<int>{500, -500, 1, -2, 262136, -262144, 3}));
    EXPECT_EQ(Apply(0x1800000), (std::vector<int>{1500, -1500, 4, -5, 786408, -786432, 10}));
    // The fraction below 1/512 is dropped: just under unity is 511/512.
    EXPECT_EQ(Apply(0xFFFFFF), (std::vector<int>{998, -999, 2, -3, 523248, -523264, 6}));

    // Unity, to within the 1/512 steps, adds no stage.
    LSoundSource source = MakeBufferSource(kSamples, 44100, 1);
    EXPECT_EQ(LSPGain().OpenSource(source).Get(), source.Get());
    EXPECT_EQ(LSPGain(0x1007FFF).OpenSource(source).Get(), source.Get());
}

} // namespace
