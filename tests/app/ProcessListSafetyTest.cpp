// The queue file is never left holding requests made of two halves: a head that cannot be
// dropped (a full disk) leaves the list as it was.
#include "app/ProcessListThread.h"
#include "platform/FileOps.h"
#include "support/FileSizeLimit.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <vector>

TEST(ProcessListSafety, ADropThatCannotBeWrittenLeavesTheListWhole) {
    TempHome home;
    const std::string list = (home.Path() / "vnprocesses.list").string();
    constexpr std::size_t kSize = 1825;
    for (const char fill : {'a', 'b', 'c'}) {
        const std::vector<char> record(kSize, fill);
        ASSERT_TRUE(ProcessListFile::Append(list.c_str(), record.data(), kSize));
    }
    std::vector<uint8_t> before, after;
    ASSERT_TRUE(LoadFile(list.c_str(), before, 0));

    EXPECT_FALSE(
        WithFileSizeLimit(2000, [&] { return ProcessListFile::DropHead(list.c_str(), kSize); }));
    ASSERT_TRUE(LoadFile(list.c_str(), after, 0));
    EXPECT_TRUE(after == before);

    ASSERT_TRUE(ProcessListFile::DropHead(list.c_str(), kSize));
    char head[kSize];
    ASSERT_EQ(ProcessListFile::ReadHead(list.c_str(), head, kSize), kSize);
    EXPECT_EQ(head[0], 'b');
    EXPECT_EQ(head[kSize - 1], 'b');
}
