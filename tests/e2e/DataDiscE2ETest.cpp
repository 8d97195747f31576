// vinora-cli burn-data onto the Virtual Burner's DVD+R: with a fixed SOURCE_DATE_EPOCH the disc
// holds, block for block, what vinora-cli mkiso writes for the same tree; isoinfo, udfinfo and
// 7z read it back file for file; and the finalised disc takes nothing more.
#include "E2ETestUtil.h"

namespace fs = std::filesystem;

namespace {

class DataDiscE2E : public ::testing::Test {
protected:
    // The tray stays in after a burn: verifying then needs nobody to close it.
    void SetUp() override {
        int status = -1;
        Cli("settings set CDRecorder CDLoadEject 0", &status);
        ASSERT_EQ(status, 0);
    }

    // Runs vinora-cli in the home folder with the reproducible clock and the Virtual Burner
    // set to `burner`.
    std::string Cli(const std::string& arguments, int* status, const std::string& burner = "") {
        return ::Cli(arguments, status,
                     "cd " + ShellQuote(home.Path()) + " && SOURCE_DATE_EPOCH=1700000000 " +
                         (burner.empty() ? "" : Env("VINORA_VIRTUAL_BURNER", burner)));
    }

    TempHome home;
};

TEST_F(DataDiscE2E, BurntDVDPlusREqualsTheImageAndReadsBackWithEveryTool) {
    const fs::path tree = home.Path() / "Archive";
    WriteNamesTree(tree);
    WriteTreeFile(tree / "Side A" / "Recording of the first side.wav", RandomBytes(3000, 2));
    WriteTreeFile(tree / "Side A" / "Recording of the second side.wav", RandomBytes(3001, 3));
    WriteTreeFile(tree / "Side B" / "whole side.wav", RandomBytes(50u * 1024 * 1024, 5));

    int status = -1;
    const fs::path image = home.Path() / "archive.iso";
    std::string said = Cli("mkiso " + ShellQuote(image) + " --label Archive --project 9 Archive", &status);
    ASSERT_EQ(status, 0) << said;
    const fs::path disc = home.Path() / "disc";
    const std::string burner = "dvd+r:" + disc.string();
    said = Cli("burn-data Archive --label Archive --project 9 --verify", &status, burner);
    ASSERT_EQ(status, 0) << said;
    EXPECT_NE(said.find("Verifying the burn"), std::string::npos) << said;

    // Block 0 to the image's end: the same bytes; a DVD+R's track ends on a 16-block boundary.
    const uintmax_t size = fs::file_size(image);
    ASSERT_GE(fs::file_size(disc), size);
    RunCommand("cmp -n " + std::to_string(size) + " " + ShellQuote(image) + " " + ShellQuote(disc), &status);
    EXPECT_EQ(status, 0);

    const std::string info = RunCommand("isoinfo -d -i " + ShellQuote(disc));
    EXPECT_NE(info.find("Volume id: ARCHIVE"), std::string::npos) << info;
    EXPECT_NE(info.find("Joliet with UCS level 3 found"), std::string::npos) << info;
    const std::string udf = RunCommand("udfinfo " + ShellQuote(disc) + " 2>&1", &status);
    EXPECT_EQ(status, 0) << udf;
    EXPECT_NE(udf.find("label=Archive"), std::string::npos) << udf;
    EXPECT_EQ(ExpectExtractedTree(disc, tree, home.Path(), home.Path()).size(), 8u);

    // Finalised: a second burn is refused and the disc is left as it was.
    const std::string before = RunCommand("md5sum < " + ShellQuote(disc));
    said = Cli("burn-data Archive --label Archive --project 9", &status, burner);
    EXPECT_EQ(status, 2);
    EXPECT_NE(said.find("The inserted disk is a DVD+R and is not empty or erasable"), std::string::npos)
        << said;
    EXPECT_EQ(RunCommand("md5sum < " + ShellQuote(disc)), before);
}

TEST_F(DataDiscE2E, UsedRewritablesAreErasedThenBurntAndVerified) {
    const fs::path tree = home.Path() / "Small";
    WriteTreeFile(tree / "Side A" / "track.wav", RandomBytes(300000, 6));
    for (const std::string media : {"cd-rw", "dvd-rw", "dvd+rw", "bd-re"}) {
        SCOPED_TRACE(media);
        const fs::path disc = home.Path() / ("disc-" + media);
        int status = -1;
        const std::string said =
            Cli("burn-data Small --erase --verify", &status, media + ":" + disc.string() + ",used");
        EXPECT_EQ(status, 0) << said;
        const fs::path work = home.Path() / ("read-" + media);
        EXPECT_EQ(ExpectExtractedTree(disc, tree, home.Path(), work).size(), 1u);
    }
}

} // namespace
