// The file helpers never touch a file they did not make: a "__wt" of the user's survives the
// writable test, and a save that fails leaves a missing file missing.
#include "platform/FileOps.h"
#include "support/FileSizeLimit.h"
#include "support/FolderContents.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <vector>

namespace fs = std::filesystem;

TEST(FileOpsSafety, TheWritableTestKeepsAFileOfThatName) {
    TempHome home;
    std::ofstream(home.Path() / "__wt") << "notes";
    const auto before = FolderContents(home.Path());
    EXPECT_TRUE(TestFolderWritable(home.Path().c_str()));
    EXPECT_EQ(FolderContents(home.Path()), before);
}

TEST(FileOpsSafety, AFailedSaveCreatesNothing) {
    TempHome home;
    const fs::path folder = home.Path() / "saves";
    fs::create_directory(folder);
    const std::vector<uint8_t> data(100000, 7);
    const fs::path target = folder / "WavCodec.wff";
    EXPECT_FALSE(WithFileSizeLimit(
        50000, [&] { return SaveFile(target.c_str(), data.data(), data.size(), 0); }));
    EXPECT_TRUE(fs::is_empty(folder));
}
