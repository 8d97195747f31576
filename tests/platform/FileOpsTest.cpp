#include "platform/FileOps.h"
#include "platform/File.h"
#include "platform/Paths.h"
#include "support/FileSizeLimit.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class FileOps : public ::testing::Test {
protected:
    TempHome home;

    std::string PathOf(const char* name) const { return (home.Path() / name).string(); }

    static std::vector<uint8_t> Pattern(std::size_t size) {
        std::vector<uint8_t> data(size);
        for (std::size_t i = 0; i < size; ++i)
            data[i] = static_cast<uint8_t>(i * 7 + i / 251);
        return data;
    }

    static std::vector<uint8_t> Load(const std::string& path) {
        std::vector<uint8_t> data;
        EXPECT_TRUE(LoadFile(path.c_str(), data, 0));
        return data;
    }
};

} // namespace

TEST_F(FileOps, SaveAppendCopyAndMoveKeepEveryByte) {
    const std::string from = PathOf("from.wav"), to = PathOf("to.wav"), moved = PathOf("b.wav");
    const std::vector<uint8_t> data = Pattern(3 * 8192 + 17);
    ASSERT_TRUE(SaveFile(from.c_str(), Pattern(50000).data(), 50000, 100));
    ASSERT_TRUE(SaveFile(from.c_str(), data.data(), data.size() - 4, 100)) << "replaces";
    ASSERT_TRUE(AppendFile(from.c_str(), data.data() + data.size() - 4, 4, 100));
    EXPECT_EQ(Load(from), data);

    ASSERT_TRUE(SaveFile(to.c_str(), Pattern(50000).data(), 50000, 0));
    ASSERT_TRUE(CopyFile(from.c_str(), to.c_str()));
    EXPECT_EQ(Load(to), data);
    struct stat info {};
    stat(to.c_str(), &info);
    EXPECT_EQ(info.st_mode & 07777, 0644u);

    // Through a link the file it names is replaced and the link stays.
    const std::string link = PathOf("link.wav");
    fs::create_symlink(to, link);
    ASSERT_TRUE(SaveFile(link.c_str(), "linked", 6, 0));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(Load(to), std::vector<uint8_t>({'l', 'i', 'n', 'k', 'e', 'd'}));
    ASSERT_TRUE(CopyFile(from.c_str(), to.c_str()));

    ASSERT_TRUE(SaveFile(moved.c_str(), "old contents", 12, 0));
    ASSERT_TRUE(MoveFile(to.c_str(), moved.c_str()));
    EXPECT_FALSE(fs::exists(to));
    EXPECT_EQ(Load(moved), data);
}

TEST_F(FileOps, FailuresLoseNoData) {
    const std::string from = PathOf("from.wav");
    ASSERT_TRUE(SaveFile(from.c_str(), "audio", 5, 0));
    // A file copied onto itself would be truncated before it is read.
    EXPECT_FALSE(CopyFile(from.c_str(), from.c_str()));
    EXPECT_EQ(Load(from).size(), 5u);
    EXPECT_FALSE(CopyFile(PathOf("missing").c_str(), PathOf("copy").c_str()));
    EXPECT_FALSE(fs::exists(PathOf("copy")));
    EXPECT_FALSE(CopyFile(from.c_str(), PathOf("no/such/folder/copy").c_str()));
    EXPECT_FALSE(MoveFile(PathOf("missing").c_str(), from.c_str()));
    EXPECT_EQ(Load(from).size(), 5u);
    std::vector<uint8_t> missing;
    EXPECT_FALSE(LoadFile(PathOf("missing").c_str(), missing, 0));

    // On a full disk a copy or a save fails and the old file stays whole, with no leftovers.
    const std::string big = PathOf("big.wav");
    const std::vector<uint8_t> data = Pattern(100000);
    ASSERT_TRUE(SaveFile(big.c_str(), data.data(), data.size(), 0));
    EXPECT_FALSE(WithFileSizeLimit(50000, [&] { return CopyFile(big.c_str(), from.c_str()); }));
    EXPECT_FALSE(WithFileSizeLimit(
        50000, [&] { return SaveFile(from.c_str(), data.data(), data.size(), 0); }));
    EXPECT_EQ(Load(from), std::vector<uint8_t>({'a', 'u', 'd', 'i', 'o'}));
    for (const auto& entry : fs::directory_iterator(home.Path()))
        EXPECT_FALSE(entry.path().filename().string().starts_with(".from")) << entry.path();
}

TEST_F(FileOps, WritableTestAndTempFilesLeaveNoStrayFiles) {
    const std::string folder = home.Path().string();
    EXPECT_TRUE(TestFolderWritable(folder.c_str()));
    EXPECT_FALSE(TestFolderWritable(PathOf("missing").c_str()));
    if (geteuid() != 0) {
        const std::string locked = PathOf("locked");
        fs::create_directory(locked);
        chmod(locked.c_str(), 0555);
        EXPECT_FALSE(TestFolderWritable(locked.c_str()));
        chmod(locked.c_str(), 0755);
    }
    EXPECT_FALSE(fs::exists(home.Path() / "__wt"));

    char made[kPathBufferSize];
    ASSERT_TRUE(GetTempFile(folder.c_str(), made, ".wav"));
    EXPECT_EQ(fs::path(made).extension(), ".wav");
    char path[kPathBufferSize] = "unchanged";
    EXPECT_FALSE(GetTempFile(PathOf("missing").c_str(), path, ".wav"));
    EXPECT_STREQ(path, "");
}
