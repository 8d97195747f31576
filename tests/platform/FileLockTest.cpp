#include "platform/FileLock.h"
#include "platform/File.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace {

class FileLock : public ::testing::Test {
protected:
    TempHome home;
    const std::string path = (home.Path() / "locked.bin").string();
    // A second open file that holds an exclusive lock, as another program would.
    LFile holder{_OpenReadWrite(path.c_str(), 0)};
};

} // namespace

TEST_F(FileLock, TimedLockGivesUpOrGetsTheLockOnceItIsFree) {
    ASSERT_TRUE(holder.IsOpen());
    LFile waiter(open(path.c_str(), O_RDONLY));
    EXPECT_FALSE(flocktimed(waiter.GetFd(), LOCK_SH, 300));
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
        holder.Close();
    });
    EXPECT_TRUE(flocktimed(waiter.GetFd(), LOCK_SH, 30000));
    release.join();
}

TEST_F(FileLock, ReadersGetTheDataWhileWritersWaitForTheLock) {
    ASSERT_TRUE(holder.IsOpen());
    ASSERT_TRUE(holder.Write("data", 4));
    LFile reader(_OpenRead(path.c_str(), 10));
    ASSERT_TRUE(reader.IsOpen()) << "reading goes ahead without the lock";
    char data[8] = {};
    EXPECT_EQ(reader.Read(data, sizeof data), 4);
    EXPECT_STREQ(data, "data");

    EXPECT_EQ(LReadWriteFile(path.c_str()), -1);
    holder.Close();
    LFile file(LReadWriteFile(path.c_str()));
    EXPECT_TRUE(file.IsOpen());
    LFile other(open(path.c_str(), O_RDONLY));
    EXPECT_FALSE(flocktimed(other.GetFd(), LOCK_SH, 0));
}
