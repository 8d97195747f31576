// Disc images built from small trees, read back sector by sector: names, order, sectors and
// descriptors of the ISO 9660 and Joliet trees, the project table, stops and vanished files.
#include "codecs/WaveBytes.h"
#include "disc/BurnDataDisk.h"
#include "disc/HybridDataDisk.h"
#include "disc/ISONames.h"
#include "support/DiscTreeFiles.h"
#include "support/RecordingProgress.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>

namespace fs = std::filesystem;

namespace {

struct Entry {
    std::string id;
    uint32_t sector;
    uint32_t size;
};

class DiscImageTest : public testing::Test {
protected:
    fs::path File(const std::string& name, const std::string& content = "x") {
        WriteTreeFile(tree / name, content);
        return tree / name;
    }

    // Builds the tree's image; the result of the job.
    LProcessResult Build(int project, const std::string& label = "my disc", int stopAfter = -1,
                         std::function<void()> beforeWriting = {}) {
        LAbstractFileSystem compilation;
        compilation.SetFSVolumeLabel(label);
        std::string error;
        for (const fs::directory_entry& entry : fs::directory_iterator(tree))
            EXPECT_TRUE(compilation.AddPath(entry.path().string(), error)) << error;
        if (beforeWriting) beforeWriting();
        LBurnDataDisk job(compilation, image.string(), project);
        RecordingProgress progress;
        progress.stopAfter = stopAfter;
        const LProcessResult result = Process(progress, job);
        error_ = job.error;
        bytes_.clear();
        std::ifstream in(image, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(in), {});
        return result;
    }

    const uint8_t* Sector(uint32_t sector) const { return bytes_.data() + size_t(sector) * 2048; }

    // The records of a folder (without "." and ".."), identifiers as stored.
    std::vector<Entry> List(uint32_t sector, uint32_t size) const {
        std::vector<Entry> entries;
        for (uint32_t at = 0; at < size;) {
            const uint8_t* record = Sector(sector) + at;
            if (record[0] == 0) {
                at = (at / 2048 + 1) * 2048;
                continue;
            }
            EXPECT_LE(at % 2048 + record[0], 2048u) << "a record crosses a sector";
            const std::string id(reinterpret_cast<const char*>(record + 33), record[32]);
            if (id != std::string(1, '\0') && id != std::string(1, '\1'))
                entries.push_back({id, GetLE32(record + 2), GetLE32(record + 10)});
            at += record[0];
        }
        return entries;
    }

    // The root folder of the tree whose descriptor is at `descriptor`.
    std::vector<Entry> Root(uint32_t descriptor) const {
        const uint8_t* d = Sector(descriptor);
        return List(GetLE32(d + 158), GetLE32(d + 166));
    }

    static std::vector<std::string> Ids(const std::vector<Entry>& entries) {
        std::vector<std::string> ids;
        for (const Entry& entry : entries)
            ids.push_back(entry.id);
        return ids;
    }

    static Entry Find(const std::vector<Entry>& entries, const std::string& id) {
        for (const Entry& entry : entries)
            if (entry.id == id) return entry;
        ADD_FAILURE() << "no " << id;
        return {};
    }

    std::string Content(const Entry& entry) const {
        return std::string(reinterpret_cast<const char*>(Sector(entry.sector)), entry.size);
    }

    TempHome home;
    fs::path tree = home.Path() / "tree";
    fs::path image = home.Path() / "out.iso";
    BurnErrorCode error_;
    std::vector<uint8_t> bytes_;
};

TEST_F(DiscImageTest, NamesOrderAndSectorsOfBothTrees) {
    File("readme", "read me");
    File("My File.txt");
    File("Report 1.doc", "with a space");
    File("Report1.doc", "without");
    File("a.txt", "small a");
    File("B.txt", "big B");
    File("empty");

    ASSERT_EQ(Build(PROJECT_ISO_JOLIET_CD), PROCESS_DONE);

    const std::vector<Entry> iso = Root(16);
    EXPECT_EQ(Ids(iso), (std::vector<std::string>{"A.TXT;1", "B.TXT;1", "EMPTY;1", "MYFILE.TXT;1",
                                                   "README;1", "REPORT1.DOC;1", "REPORT12.DOC;1"}));
    EXPECT_EQ(Content(Find(iso, "REPORT1.DOC;1")), "with a space");
    EXPECT_EQ(Content(Find(iso, "REPORT12.DOC;1")), "without");
    // An empty file still takes its sector; readme comes next in the compilation's order.
    EXPECT_EQ(Find(iso, "README;1").sector, Find(iso, "EMPTY;1").sector + 1);

    const std::vector<Entry> joliet = Root(17);
    const auto ucs2 = [](const std::string& text) { return LCopyToBigEndianUnicode(text); };
    EXPECT_EQ(joliet.front().id, ucs2("B.txt;1"));
    EXPECT_EQ(joliet[4].id, ucs2("a.txt;1"));
    EXPECT_EQ(Find(joliet, ucs2("a.txt;1")).sector, Find(iso, "A.TXT;1").sector);
    EXPECT_EQ(Find(joliet, ucs2("B.txt;1")).sector, Find(iso, "B.TXT;1").sector);

    EXPECT_EQ(std::string(reinterpret_cast<const char*>(Sector(16) + 40), 32),
              "MYDISC" + std::string(26, ' '));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(Sector(17) + 40), 14), ucs2("my disc"));
    EXPECT_EQ(Sector(17)[54], 0);
    EXPECT_EQ(Sector(17)[55], ' ');
    EXPECT_EQ(Sector(18)[0], 255);
    EXPECT_EQ(GetLE32(Sector(16) + 80), bytes_.size() / 2048);
    EXPECT_EQ(bytes_.size() % (16 * 2048), 0u);
}

TEST_F(DiscImageTest, AFolderOfTwoSectorsOfRecords) {
    for (int i = 0; i < 60; ++i)
        File("many/file" + std::to_string(1000 + i) + ".txt", std::to_string(i));
    ASSERT_EQ(Build(PROJECT_ISO_CD), PROCESS_DONE);
    const Entry many = Root(16).front();
    EXPECT_EQ(many.id, "MANY");
    EXPECT_EQ(many.size, 4096u);
    const uint8_t* own = Sector(many.sector);
    EXPECT_EQ(GetLE32(own + 10), 4096u); // the current-folder record says so too
    const std::vector<Entry> files = List(many.sector, many.size);
    ASSERT_EQ(files.size(), 60u);
    EXPECT_EQ(Content(files[59]), "59");
    // Only ISO 9660: the terminator follows the primary descriptor.
    EXPECT_EQ(Sector(17)[0], 255);
}

TEST_F(DiscImageTest, AStopOrAVanishedFileLeavesNoImageAndKeepsAnEarlierOne) {
    File("one.wav", std::string(100000, 'a'));
    File("two.wav", std::string(100000, 'b'));
    std::ofstream(image) << "an earlier image";
    for (int stopAfter : {0, 1, 3}) {
        EXPECT_NE(Build(PROJECT_HYBRID_DISK, "x", stopAfter), PROCESS_DONE) << stopAfter;
        EXPECT_EQ(std::string(bytes_.begin(), bytes_.end()), "an earlier image");
    }
    EXPECT_EQ(Build(PROJECT_HYBRID_DISK, "x", -1, [this] { fs::remove(tree / "two.wav"); }),
              PROCESS_FAILED);
    EXPECT_EQ(error_.code, 41u);
    EXPECT_EQ(std::string(bytes_.begin(), bytes_.end()), "an earlier image");
    for (const fs::directory_entry& entry : fs::directory_iterator(home.Path()))
        EXPECT_EQ(entry.path().string().find(".part"), std::string::npos) << entry.path();
}

TEST_F(DiscImageTest, TheCompilationRenamesClashesCarriesSizesUpAndTakesOnlyFiles) {
    const fs::path first = File("a/song.wav", std::string(3000, 'a'));
    const fs::path second = File("b/song.wav", std::string(10, 'b'));
    File("c/deeper/x.bin", std::string(5000, 'c'));
    // A pipe inside a folder is left out; a link that loops says why it cannot be added.
    ASSERT_EQ(mkfifo((tree / "c/pipe").c_str(), 0644), 0);
    fs::create_symlink("loop", tree / "loop");
    LAbstractFileSystem compilation;
    std::string error;
    ASSERT_TRUE(compilation.AddPath(first.string(), error));
    ASSERT_TRUE(compilation.AddPath(second.string(), error));
    ASSERT_TRUE(compilation.AddPath((tree / "c").string(), error)) << error;
    EXPECT_FALSE(compilation.AddPath((tree / "c/pipe").string(), error));
    EXPECT_FALSE(compilation.AddPath((tree / "loop").string(), error));
    EXPECT_NE(error.find("Too many levels of symbolic links"), std::string::npos) << error;
    const auto& children = compilation.Root().children;
    ASSERT_EQ(children.size(), 3u);
    EXPECT_EQ(children.at("song2.wav")->sourcePath, second.string());
    EXPECT_EQ(children.at("c")->children.size(), 1u);
    EXPECT_EQ(compilation.Root().size, 8010u);
    EXPECT_EQ(compilation.Root().allocatedSize, 4096u + 2048u + 6144u);
    EXPECT_EQ(compilation.Root().subfolderCount, 1u);
    EXPECT_EQ(children.at("c")->size, 5000u);
}

TEST(DiscNamesTest, IsoAndJolietNames) {
    // Plain names and the volume label are read back from the image of the first test.
    EXPECT_EQ(LISOName("...", false), "__.");
    EXPECT_EQ(LISOName("song.$$", false), "SONG_.");
    EXPECT_EQ(LISOName("Side A.Takes", true), "SIDEATAK");
    EXPECT_EQ(LJolietName("bad\x01name?.txt"), "bad_name_.txt");
    const std::string longName = std::string(70, 'n') + ".mp3";
    EXPECT_EQ(LJolietName(longName), std::string(59, 'n') + ".mp3");
    EXPECT_EQ(LJolietName("x." + std::string(70, 'e')), "x." + std::string(6, 'e'));
    // Never half a character.
    EXPECT_EQ(LJolietName(std::string(30, 'a') + std::string(20, 'a') + "\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9.flac").size(), 63u);
}

// Calls `change` once, at the first progress report: after the job has looked at its inputs.
struct ChangingProgress : RecordingProgress {
    std::function<void()> change;
    void SetProgress(double fraction) override {
        if (change) std::exchange(change, nullptr)();
        RecordingProgress::SetProgress(fraction);
    }
};

TEST_F(DiscImageTest, ASourceImageThatChangesIsAnErrorNamingThePath) {
    const fs::path source = File("source.iso", std::string(200000, 's'));
    std::ofstream(image, std::ios::binary) << "an earlier image";
    const struct {
        const char* name;
        std::function<void()> change;
    } changes[] = {
        {"grown", [&] { std::ofstream(source, std::ios::app) << std::string(100000, 'g'); }},
        {"shrunk", [&] { fs::resize_file(source, 10000); }},
    };
    for (const auto& [name, change] : changes) {
        LAbstractFileSystem compilation;
        LBurnDataDisk job(compilation, image.string(), PROJECT_HYBRID_DISK);
        job.sourceImage = source.string();
        ChangingProgress progress;
        progress.change = change;
        EXPECT_EQ(Process(progress, job), PROCESS_FAILED) << name;
        EXPECT_EQ(job.error.code, 5u) << name;
        EXPECT_NE(job.error.Describe().find(source.string()), std::string::npos)
            << job.error.Describe();
        std::ifstream in(image, std::ios::binary);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "an earlier image") << name;
    }
}

TEST_F(DiscImageTest, LargeFilesGoInSlicesThatLookForAStop) {
    // 136 MiB without data: three slices.
    const fs::path large = File("large.bin");
    fs::resize_file(large, 136u << 20);

    LAbstractFileSystem compilation;
    std::string error;
    ASSERT_TRUE(compilation.AddPath(large.string(), error));
    LBurnDataDisk job(compilation, image.string(), PROJECT_ISO_CD);
    ChangingProgress progress;
    // Reports from within the file, each followed by a look at the stop request.
    progress.change = [&progress] { progress.stopAfter = progress.stopQueries + 2; };
    EXPECT_EQ(Process(progress, job), PROCESS_FAILED);
    EXPECT_EQ(job.error.code, 1u);
    const auto within = std::count_if(progress.progress.begin(), progress.progress.end(),
                                      [](double value) { return value > 0.1 && value < 1; });
    EXPECT_EQ(within, 1) << "stopped after the first slice";
}

TEST_F(DiscImageTest, MoreFoldersThanThePathTableCanNumberAreRefused) {
    LAbstractFileSystem folders;
    for (int i = 0; i < 65535; ++i)
        folders.Root().AddSubFile(
            std::make_unique<LAbstractBurnFile>("/f/" + std::to_string(i), true, 0, 0));
    LBurnDataDisk job(folders, image.string(), PROJECT_ISO_CD);
    RecordingProgress progress;
    EXPECT_EQ(Process(progress, job), PROCESS_FAILED);
    EXPECT_EQ(job.error.code, 6u);
    EXPECT_FALSE(fs::exists(image));
}

TEST_F(DiscImageTest, UdfNamesCutToTheirLimitStayApart) {
    // Unicode names are cut to 127 characters: these two agree that far.
    const std::string start = "\xe2\x82\xac" + std::string(150, 'a');
    File(start + "1.txt", "one");
    File(start + "2.txt", "two");
    ASSERT_EQ(Build(PROJECT_UDF_CD), PROCESS_DONE);
    const std::string listing = RunCommand("7z l -slt " + ShellQuote(image) + " 2>&1");
    const std::string cut = "\xe2\x82\xac" + std::string(126, 'a');
    const std::string renamed = "\xe2\x82\xac" + std::string(121, 'a') + "2.txt";
    EXPECT_NE(listing.find("Path = " + cut + "\n"), std::string::npos) << listing;
    EXPECT_NE(listing.find("Path = " + renamed + "\n"), std::string::npos) << listing;
}

} // namespace
