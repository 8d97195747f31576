// Images made by vinora-cli mkiso, read back by tools nobody here wrote: isoinfo, 7z, udfinfo
// and xorriso.
#include "E2ETestUtil.h"

#include "burn/BurnMediaTypes.h"

#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string Mkiso(const std::string& arguments, int* status) {
    return Cli("mkiso " + arguments, status);
}

} // namespace

TEST(DiscImageE2E, HybridImageReadsBackWithEveryTool) {
    TempHome home;
    const fs::path tree = home.Path() / "Collection";
    WriteNamesTree(tree);
    WriteTreeFile(tree / "odd\x07name.txt", "control character");
    // 300 MB, mostly a hole, with data at both ends.
    const fs::path big = tree / "Side B" / "whole side.wav";
    WriteTreeFile(big, RandomBytes(100000, 3));
    fs::resize_file(big, 300u * 1024 * 1024);
    std::ofstream(big, std::ios::binary | std::ios::in | std::ios::ate) << RandomBytes(4096, 4);

    const fs::path image = home.Path() / "collection.iso";
    int status = -1;
    const std::string said =
        Mkiso(ShellQuote(image) + " --label " + ShellQuote("my disc") + " " + ShellQuote(tree), &status);
    ASSERT_EQ(status, 0) << said;
    const uintmax_t sectors = fs::file_size(image) / 2048;

    const std::string info = RunCommand("isoinfo -d -i " + ShellQuote(image));
    EXPECT_NE(info.find("Volume id: MYDISC"), std::string::npos) << info;
    EXPECT_NE(info.find("Volume size is: " + std::to_string(sectors)), std::string::npos) << info;
    EXPECT_NE(info.find("Joliet with UCS level 3 found"), std::string::npos) << info;
    const std::string iso = RunCommand("isoinfo -l -i " + ShellQuote(image));
    for (const char* name : {"REPORT1.DOC;1", "REPORT12.DOC;1", "EMPTY.WAV;1", "ODDNAME.TXT;1", "DEEPEST"})
        EXPECT_NE(iso.find(name), std::string::npos) << name;
    const std::string joliet = RunCommand("isoinfo -J -l -i " + ShellQuote(image));
    for (const char* name : {"Report 1.doc", "whole side.wav", "odd_name.txt"})
        EXPECT_NE(joliet.find(name), std::string::npos) << name;

    const std::string udf = RunCommand("udfinfo " + ShellQuote(image) + " 2>&1");
    EXPECT_NE(udf.find("label=my disc"), std::string::npos) << udf;
    EXPECT_NE(udf.find("udfrev=1.02"), std::string::npos) << udf;
    EXPECT_NE(udf.find("numfiles=7"), std::string::npos) << udf;
    EXPECT_NE(udf.find("numdirs=6"), std::string::npos) << udf; // the root, Collection and four

    const std::string listing = RunCommand("xorriso -indev " + ShellQuote(image) + " -find / 2>/dev/null");
    const std::vector<fs::path> files = ExpectExtractedTree(image, tree, home.Path(), home.Path());
    for (const fs::path& relative : files)
        EXPECT_NE(listing.find("'/" + JolietPath(relative).string() + "'"), std::string::npos) << relative;
    EXPECT_EQ(files.size(), 7u);
}

TEST(DiscImageE2E, EachProjectHasItsTreesAndBadInputIsRefused) {
    TempHome home;
    const fs::path file = home.Path() / "song.wav";
    WriteTreeFile(file, "audio");
    const fs::path image = home.Path() / "p.iso";
    for (int project = 2; project <= 18; ++project) {
        if (project == PROJECT_UDF_DISK) continue; // not made into an image file
        int status = -1;
        Mkiso(ShellQuote(image) + " --project " + std::to_string(project) + " " + ShellQuote(file), &status);
        ASSERT_EQ(status, 0) << project;
        const bool iso = project != 4 && project != 8 && project != 11 && project != 14;
        const bool joliet = iso && project != 3 && project != 7;
        const bool udf = project == 4 || project == 5 || project == 8 || project == 9 ||
                         (project >= 11 && project <= 15 && project != 13) || project == 18;
        int isoStatus = -1;
        const std::string info = RunCommand("isoinfo -d -i " + ShellQuote(image) + " 2>&1", &isoStatus);
        EXPECT_EQ(info.find("CD-ROM is in ISO 9660 format") != std::string::npos, iso) << project;
        EXPECT_EQ(info.find("Joliet with UCS level 3 found") != std::string::npos, joliet) << project;
        int udfStatus = -1;
        RunCommand("udfinfo " + ShellQuote(image) + " 2>&1", &udfStatus);
        EXPECT_EQ(udfStatus == 0, udf) << project;
    }

    // Refused, and no image made: a folder that is not there, 3,000 names alike in 8.3 form
    // (the ISO 9660 tree cannot tell them apart), and a file nobody may read.
    const fs::path many = home.Path() / "many";
    fs::create_directories(many);
    for (int i = 0; i < 3000; ++i)
        std::ofstream(many / ("Track " + std::to_string(10000 + i) + ".mp3"));
    const fs::path locked = home.Path() / "locked.wav";
    WriteTreeFile(locked, "secret");
    fs::permissions(locked, fs::perms::none);
    fs::remove(image);
    const std::pair<fs::path, const char*> refused[] = {
        {"/no/such/folder", "does not exist"}, {many, "alike"}, {locked, "cannot be read"}};
    int status = -1;
    for (const auto& [path, reason] : refused) {
        if (path == locked && geteuid() == 0) continue; // root reads it all the same
        const std::string said = Mkiso(ShellQuote(image) + " " + ShellQuote(path), &status);
        EXPECT_EQ(status, 2) << said;
        EXPECT_NE(said.find(reason), std::string::npos) << said;
        EXPECT_FALSE(fs::exists(image)) << path;
    }
    // UDF alone takes the names alike.
    Mkiso(ShellQuote(image) + " --project 4 " + ShellQuote(many), &status);
    EXPECT_EQ(status, 0);
    EXPECT_NE(RunCommand("udfinfo " + ShellQuote(image)).find("numfiles=3000"), std::string::npos);

    // A boot image fills the first 16 sectors; an image is copied as it is.
    const fs::path boot = home.Path() / "boot.img";
    WriteTreeFile(boot, RandomBytes(40000, 5));
    Mkiso(ShellQuote(image) + " --boot " + ShellQuote(boot) + " " + ShellQuote(file), &status);
    ASSERT_EQ(status, 0);
    std::ifstream in(image, std::ios::binary);
    std::string start(32768, 0);
    in.read(start.data(), 32768);
    EXPECT_EQ(start, RandomBytes(40000, 5).substr(0, 32768));
    const fs::path copy = home.Path() / "copy.iso";
    Mkiso(ShellQuote(copy) + " --from " + ShellQuote(image), &status);
    ASSERT_EQ(status, 0);
    EXPECT_TRUE(SameFile(image, copy));
}
