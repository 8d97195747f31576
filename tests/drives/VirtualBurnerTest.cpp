// The Virtual Burner: its setting, the disc state kept across processes, and audio burns and
// erases written into its files.
#include "disc/DiscCheck.h"
#include "drives/SystemDiscService.h"
#include "drives/VirtualBurner.h"
#include "support/RecordingProgress.h"

#include "VirtualDiscTest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

class VirtualBurner : public VirtualDiscTest {
protected:
    std::shared_ptr<LVirtualBurner> Make(const std::string& setting) {
        return std::make_shared<LVirtualBurner>(Disc(setting));
    }
    static std::string Read(const std::string& file) {
        std::ifstream in(file, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }
};

// Produces a counting pattern of bytes, or fails at a call.
class CountingProducer : public LAudioTrackProducer {
public:
    uint8_t next = 0;
    int pre = 0, post = 0;
    int32_t PreBurn() override { return ++pre, 0; }
    int32_t Produce(uint8_t* out, uint32_t bytes, uint32_t& produced) override {
        for (uint32_t i = 0; i < bytes; ++i) out[i] = next++;
        produced = bytes;
        return 0;
    }
    void PostBurn() override { ++post; }
};

int Follow(LDiscDevice& device) {
    RecordingProgress progress;
    return FollowDiscOperation(progress, device);
}

} // namespace

TEST(VirtualBurnerSetting, ParsesEveryOptionAndRefusesTheRest) {
    LVirtualBurnerOptions options;
    std::string error;
    ASSERT_TRUE(LVirtualBurnerOptions::Parse(
        "dvd+rw:/x/y,used,capacity=1000,open,slow=5,write-error=7,verify-error=9,not-ready=2,"
        "no-write12,no-streaming", options, error));
    EXPECT_EQ(options.media, LDiscMediaKind::DVDPlusRW);
    EXPECT_EQ(options.path, "/x/y");
    EXPECT_TRUE(options.used && options.open && options.noWrite12 && options.noStreaming);
    EXPECT_EQ(options.capacity, 1000);
    EXPECT_EQ(options.slowMs, 5u);
    EXPECT_EQ(options.writeError, 7);
    EXPECT_EQ(options.verifyError, 9);
    EXPECT_EQ(options.notReady, 2u);
    ASSERT_TRUE(LVirtualBurnerOptions::Parse("none:/x", options, error));
    EXPECT_EQ(options.media, LDiscMediaKind::None);
    for (const char* bad : {"cd:/x", "cd-r", "cd-r:", "cd-r:/x,fast", "cd-r:/x,capacity=-1",
                            "cd-r:/x,slow=abc"})
        EXPECT_FALSE(LVirtualBurnerOptions::Parse(bad, options, error)) << bad;
    // The CD and BD capacities are checked where those discs are burnt and read.
    EXPECT_EQ(VirtualDefaultCapacity(LDiscMediaKind::DVDR), 2295104u);
}

TEST_F(VirtualBurner, BurnWritesBinAndCueAndTheNextProcessSeesAUsedDisc) {
    auto burner = Make("cd-r");
    LDiscDeviceStatus status = burner->CopyStatus();
    EXPECT_TRUE(status.mediaPresent && status.blank && status.appendable && !status.erasable);
    EXPECT_EQ(status.freeBlocks, 359847u);

    CountingProducer first, second;
    std::vector<LDiscAudioTrack> layout{{80, "One \"A\"", "Band", &first}, {2, "", "", &second}};
    ASSERT_TRUE(burner->StartAudioBurn(layout, {0, true}));
    EXPECT_EQ(Follow(*burner), 0);
    EXPECT_EQ(first.pre + first.post + second.pre + second.post, 4);
    EXPECT_EQ(fs::file_size(path + ".bin"), 82u * 2352);
    EXPECT_EQ(Read(path + ".cue"), "FILE \"disc.bin\" BINARY\n"
                                   "  TRACK 01 AUDIO\n"
                                   "    TITLE \"One 'A'\"\n"
                                   "    PERFORMER \"Band\"\n"
                                   "    INDEX 01 00:00:00\n"
                                   "  TRACK 02 AUDIO\n"
                                   "    INDEX 01 00:01:05\n");
    const std::string bin = Read(path + ".bin");
    EXPECT_EQ(uint8_t(bin[300]), 300 % 256);
    EXPECT_EQ(uint8_t(bin[80 * 2352 + 1]), 1);

    // A second process with the same setting finds the disc burnt.
    auto again = Make("cd-r");
    status = again->CopyStatus();
    EXPECT_FALSE(status.blank || status.appendable);
    EXPECT_EQ(status.usedBlocks, 82u);
    EXPECT_FALSE(again->StartAudioBurn(layout, {}));
    // Another setting is another disc.
    EXPECT_TRUE(Make("cd-r,capacity=500")->CopyStatus().blank);
}

TEST_F(VirtualBurner, AFailedOrCancelledBurnLeavesNoFilesAndABlankDisc) {
    auto burner = Make("cd-r,write-error=40");
    CountingProducer producer;
    ASSERT_TRUE(burner->StartAudioBurn({{100, "", "", &producer}}, {}));
    EXPECT_EQ(Follow(*burner), 2);
    EXPECT_FALSE(fs::exists(path + ".bin") || fs::exists(path + ".cue"));
    EXPECT_TRUE(burner->CopyStatus().blank);
    EXPECT_EQ(producer.post, 1);

    burner->Disc().FailWriteAt(-1);
    auto slow = Make("cd-r,slow=20");
    ASSERT_TRUE(slow->StartAudioBurn({{1000, "", "", &producer}}, {}));
    RecordingProgress stopping;
    stopping.stopAfter = 3;
    EXPECT_EQ(FollowDiscOperation(stopping, *slow), 1);
    EXPECT_EQ(slow->OperationStatus().state, LDiscOperationState::Failed);
    EXPECT_FALSE(fs::exists(path + ".bin"));

    // More blocks than the disc holds.
    auto small = Make("cd-r,capacity=10");
    ASSERT_TRUE(small->StartAudioBurn({{11, "", "", &producer}}, {}));
    EXPECT_EQ(Follow(*small), 2);
}

TEST_F(VirtualBurner, TrayMediaAndErase) {
    auto burner = Make("cd-rw,used,open,not-ready=1");
    EXPECT_TRUE(burner->CopyStatus().inTransition);
    EXPECT_FALSE(burner->CopyStatus().mediaPresent);  // the tray is open
    burner->CloseTray();
    LDiscDeviceStatus status = burner->CopyStatus();
    EXPECT_TRUE(status.mediaPresent && status.erasable && !status.blank);
    EXPECT_GT(status.usedBlocks, 0u);
    std::ofstream(path + ".bin") << "old";
    ASSERT_TRUE(burner->StartErase(false));
    EXPECT_EQ(Follow(*burner), 0);
    EXPECT_TRUE(burner->CopyStatus().blank);
    EXPECT_FALSE(fs::exists(path + ".bin"));

    int changes = 0;
    auto watch = burner->Disc().Watch([&] { ++changes; });
    burner->EjectMedia();
    EXPECT_FALSE(burner->CopyStatus().mediaPresent);
    burner->Disc().Insert(LDiscMediaKind::CDR, true);
    EXPECT_FALSE(burner->StartErase(true)); // a CD-R cannot be erased
    burner->Disc().Remove();
    EXPECT_FALSE(burner->CopyStatus().mediaPresent);
    EXPECT_EQ(changes, 3);
    watch.reset();
    burner->CloseTray();
    EXPECT_EQ(changes, 3);
}

TEST_F(VirtualDiscTest, TheVirtualBurnerComesAfterTheRealDrives) {
    LSystemDiscService none("", false);
    EXPECT_TRUE(none.CopyDeviceArray().empty());
    LSystemDiscService bad("floppy:/x", false);
    EXPECT_FALSE(bad.SettingError().empty());
    EXPECT_TRUE(bad.CopyDeviceArray().empty());
    LSystemDiscService withVirtual("none:" + path, true);
    const std::vector<LDiscDeviceRef> devices = withVirtual.CopyDeviceArray();
    ASSERT_FALSE(devices.empty());
    EXPECT_EQ(devices.back()->CopyInfo().product, "Virtual Burner");
    EXPECT_EQ(devices.back(), withVirtual.VirtualBurner());
}
