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

using Clock = std::chrono::steady_clock;

long MillisecondsSince(Clock::time_point start) {
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

class FileLock : public ::testing::Test {
protected:
    TempHome home;
    const std::string path = (home.Path() / "locked.bin").string();
    // A second open file that holds an exclusive lock, as another program would.
    LFile holder{_OpenReadWrite(path.c_str(), 0)};
};

} // namespace

TEST_F(FileLock, WaitsWithDoublingStepsUntilTheLockIsFree) {
    ASSERT_TRUE(holder.IsOpen());
    LFile waiter(open(path.c_str(), O_RDONLY));
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
        holder.Close();
    });
    // With a 5000 ms limit the tries come after 0, 157 and 471 ms: the lock released at
    // 250 ms is taken by the third one.
    const Clock::time_point start = Clock::now();
    EXPECT_TRUE(flocktimed(waiter.GetFd(), LOCK_SH, 5000));
    const long elapsed = MillisecondsSince(start);
    release.join();
    EXPECT_GE(elapsed, 471);
    EXPECT_LT(elapsed, 2500);
}

TEST_F(FileLock, GivesUpAfterTheLastStep) {
    ASSERT_TRUE(holder.IsOpen());
    LFile waiter(open(path.c_str(), O_RDONLY));
    // 640 ms: sleeps of 21, 42, 84, 168 and 336 ms, then no more.
    const Clock::time_point start = Clock::now();
    EXPECT_FALSE(flocktimed(waiter.GetFd(), LOCK_SH, 640));
    const long elapsed = MillisecondsSince(start);
    EXPECT_GE(elapsed, 651);
    EXPECT_LT(elapsed, 3000);
}

TEST_F(FileLock, OpensWithoutTheLockWhenItIsNotFree) {
    ASSERT_TRUE(holder.IsOpen());
    ASSERT_TRUE(holder.Write("data", 4));
    LFile reader(_OpenRead(path.c_str(), 10));
    ASSERT_TRUE(reader.IsOpen());
    char data[8] = {};
    EXPECT_EQ(reader.Read(data, sizeof data), 4);
    EXPECT_STREQ(data, "data");
}

TEST_F(FileLock, ReadWriteFileFailsWhileLockedElsewhere) {
    ASSERT_TRUE(holder.IsOpen());
    EXPECT_EQ(LReadWriteFile(path.c_str()), -1);
    holder.Close();
    LFile file(LReadWriteFile(path.c_str()));
    EXPECT_TRUE(file.IsOpen());
    // While this one holds it, a shared lock cannot be had either.
    LFile other(open(path.c_str(), O_RDONLY));
    EXPECT_FALSE(flocktimed(other.GetFd(), LOCK_SH, 0));
}
