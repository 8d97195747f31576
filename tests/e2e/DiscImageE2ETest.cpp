// Images made by vinora-cli mkiso, read back by tools nobody here wrote: isoinfo, 7z, udfinfo
// and xorriso.
#include "burn/BurnMediaTypes.h"
#include "disc/ISONames.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>

namespace fs = std::filesystem;

namespace {

std::string Mkiso(const std::string& arguments, int* status) {
    return RunCommand(std::string(VINORA_CLI) + " mkiso " + arguments + " 2>&1", status);
}

bool SameFile(const fs::path& a, const fs::path& b) {
    int status = -1;
    RunCommand("cmp -s " + ShellQuote(a) + " " + ShellQuote(b), &status);
    return status == 0;
}

void Write(const fs::path& path, const std::string& content) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

std::string Random(size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string out(size, 0);
    for (char& c : out)
        c = static_cast<char>(random());
    return out;
}

// The path a source file has in the Joliet tree: each name cut as Joliet cuts it.
fs::path JolietPath(const fs::path& relative) {
    fs::path out;
    for (const fs::path& part : relative)
        out /= LJolietName(part.string());
    return out;
}

} // namespace

TEST(DiscImageE2E, HybridImageReadsBackWithEveryTool) {
    TempHome home;
    const fs::path tree = home.Path() / "Collection";
    const std::string longName = "Ünïcödé " + std::string(40, 'x') + " ßßßß tune.mp3";
    ASSERT_GT(longName.size(), 64u);
    Write(tree / "Side A" / "Deeper" / "Deepest" / longName, Random(5000, 1));
    Write(tree / "Side A" / "Report 1.doc", "with a space");
    Write(tree / "Side A" / "Report1.doc", "without");
    Write(tree / "empty.wav", "");
    Write(tree / "exact.bin", Random(2048, 2));
    Write(tree / "odd\x07name.txt", "control character");
    // 300 MB, mostly a hole, with data at both ends.
    const fs::path big = tree / "Side B" / "whole side.wav";
    Write(big, Random(100000, 3));
    fs::resize_file(big, 300u * 1024 * 1024);
    std::ofstream(big, std::ios::binary | std::ios::in | std::ios::ate) << Random(4096, 4);

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

    const fs::path jolietOut = home.Path() / "joliet";
    const fs::path udfOut = home.Path() / "udf";
    RunCommand("7z x -tiso -o" + ShellQuote(jolietOut) + " " + ShellQuote(image), &status);
    EXPECT_EQ(status, 0);
    RunCommand("7z x -tudf -o" + ShellQuote(udfOut) + " " + ShellQuote(image), &status);
    EXPECT_EQ(status, 0);
    const std::string listing = RunCommand("xorriso -indev " + ShellQuote(image) + " -find / 2>/dev/null");
    int files = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(tree)) {
        if (!entry.is_regular_file()) continue;
        ++files;
        const fs::path relative = fs::relative(entry.path(), home.Path());
        EXPECT_TRUE(SameFile(entry.path(), udfOut / relative)) << relative;
        EXPECT_TRUE(SameFile(entry.path(), jolietOut / JolietPath(relative))) << relative;
        EXPECT_NE(listing.find("'/" + JolietPath(relative).string() + "'"), std::string::npos) << relative;
    }
    EXPECT_EQ(files, 7);
}

TEST(DiscImageE2E, EachProjectHasItsTreesAndBadInputIsRefused) {
    TempHome home;
    const fs::path file = home.Path() / "song.wav";
    Write(file, "audio");
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

    int status = -1;
    EXPECT_NE(Mkiso(ShellQuote(image) + " /no/such/folder", &status).find("does not exist"),
              std::string::npos);
    EXPECT_EQ(status, 2);

    // 3,000 names alike in 8.3 form: the ISO 9660 tree cannot tell them apart.
    const fs::path many = home.Path() / "many";
    fs::create_directories(many);
    for (int i = 0; i < 3000; ++i)
        std::ofstream(many / ("Track " + std::to_string(10000 + i) + ".mp3"));
    fs::remove(image);
    const std::string said = Mkiso(ShellQuote(image) + " " + ShellQuote(many), &status);
    EXPECT_EQ(status, 2) << said;
    EXPECT_NE(said.find("alike"), std::string::npos) << said;
    EXPECT_FALSE(fs::exists(image));
    // UDF alone takes them.
    Mkiso(ShellQuote(image) + " --project 4 " + ShellQuote(many), &status);
    EXPECT_EQ(status, 0);
    EXPECT_NE(RunCommand("udfinfo " + ShellQuote(image)).find("numfiles=3000"), std::string::npos);

    if (geteuid() != 0) {
        const fs::path locked = home.Path() / "locked.wav";
        Write(locked, "secret");
        fs::permissions(locked, fs::perms::none);
        EXPECT_NE(Mkiso(ShellQuote(image) + " " + ShellQuote(locked), &status).find("cannot be read"),
                  std::string::npos);
        EXPECT_EQ(status, 2);
    }

    // A boot image fills the first 16 sectors; an image is copied as it is.
    const fs::path boot = home.Path() / "boot.img";
    Write(boot, Random(40000, 5));
    Mkiso(ShellQuote(image) + " --boot " + ShellQuote(boot) + " " + ShellQuote(file), &status);
    ASSERT_EQ(status, 0);
    std::ifstream in(image, std::ios::binary);
    std::string start(32768, 0);
    in.read(start.data(), 32768);
    EXPECT_EQ(start, Random(40000, 5).substr(0, 32768));
    const fs::path copy = home.Path() / "copy.iso";
    Mkiso(ShellQuote(copy) + " --from " + ShellQuote(image), &status);
    ASSERT_EQ(status, 0);
    EXPECT_TRUE(SameFile(image, copy));
}
