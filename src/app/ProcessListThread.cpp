#include "app/ProcessListThread.h"

#include "platform/AtomicFile.h"
#include "platform/File.h"
#include "platform/Log.h"
#include "platform/Settings.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <thread>
#include <vector>

LProcessListThread<LProcessConvert, MainProcessNotify> thrConvertList;

namespace ProcessListFile {

namespace {

using Header = std::array<uint8_t, kHeaderSize>;

// How often a queue waiting for another program's run looks again.
constexpr int kRunRetryMs = 200;

Header MakeHeader(uint16_t resumeCount, std::size_t recordSize) {
    const uint32_t size = static_cast<uint32_t>(recordSize);
    return {static_cast<uint8_t>(kVersion),    static_cast<uint8_t>(kVersion >> 8),
            static_cast<uint8_t>(resumeCount), static_cast<uint8_t>(resumeCount >> 8),
            static_cast<uint8_t>(size),        static_cast<uint8_t>(size >> 8),
            static_cast<uint8_t>(size >> 16),  static_cast<uint8_t>(size >> 24)};
}

uint32_t Field(const Header& header, int at, int width) {
    uint32_t value = 0;
    for (int i = 0; i < width; ++i)
        value |= uint32_t{header[at + i]} << (8 * i);
    return value;
}

// Opens the list with one of the locking opens and makes sure the lock is on the file that has
// the name now: DropHead puts a new file in the list's place, and a writer that waited for the
// lock on the old one would otherwise write into a file that is gone. -1 when it cannot.
int OpenCurrent(const char* path, int (*openLocked)(const char*, uint32_t)) {
    for (int tries = 0; tries < 100; ++tries) {
        const int fd = openLocked(path, kLockWaitMs);
        if (fd < 0) return fd;
        struct stat opened, named;
        if (fstat(fd, &opened) == 0 && stat(path, &named) == 0 && opened.st_dev == named.st_dev &&
            opened.st_ino == named.st_ino)
            return fd;
        close(fd);
    }
    return -1;
}

} // namespace

bool Resume(const char* path, std::size_t recordSize, const DiscardHandler& discarded) {
    LFile file(OpenCurrent(path, _OpenReadWrite));
    const int failCount = LUserSettingGet<int>("Settings", "FailCount", 1);
    Header header{};
    const bool whole = file.IsOpen() && file.Read(header.data(), header.size()) == kHeaderSize;
    if (whole && Field(header, 0, 2) == kVersion && Field(header, 4, 4) == recordSize &&
        failCount >= static_cast<int>(Field(header, 2, 2))) {
        const Header resumed =
            MakeHeader(static_cast<uint16_t>(Field(header, 2, 2) + 1), recordSize);
        file.Seek(0);
        file.Write(resumed.data(), resumed.size());
        return true;
    }
    // Whatever whole records a list of our own layout holds are handed over before it goes.
    if (whole && discarded && Field(header, 0, 2) == kVersion && Field(header, 4, 4) == recordSize) {
        std::vector<uint8_t> records(static_cast<std::size_t>(std::max<int64_t>(
            file.GetSize() - static_cast<int64_t>(kHeaderSize), 0)));
        const ssize_t got = file.Read(records.data(), records.size());
        records.resize(got > 0 ? static_cast<std::size_t>(got) / recordSize * recordSize : 0);
        if (!records.empty()) discarded(records);
    }
    file.Close();
    Delete(path);
    return false;
}

bool Append(const char* path, const void* record, std::size_t recordSize) {
    LFile file(OpenCurrent(path, _OpenAppendAlways));
    if (!file.IsOpen()) return false;
    const int64_t size = file.GetSize();
    bool written = size >= 0;
    if (written && size == 0) {
        const Header header = MakeHeader(0, recordSize);
        written = file.Write(header.data(), header.size());
    }
    written = written && file.Write(record, recordSize);
    // A short write would misalign every record appended after it.
    if (!written && size >= 0) [[maybe_unused]] const int cut = ftruncate(file.GetFd(), size);
    return written;
}

std::size_t ReadHead(const char* path, void* record, std::size_t recordSize) {
    LFile file(OpenCurrent(path, _OpenRead));
    if (!file.IsOpen() || file.Seek(kHeaderSize) != static_cast<int64_t>(kHeaderSize)) return 0;
    const ssize_t got = file.Read(record, recordSize);
    return got > 0 ? static_cast<std::size_t>(got) : 0;
}

bool DropHead(const char* path, std::size_t recordSize) {
    LFile file(OpenCurrent(path, _OpenReadWrite));
    if (!file.IsOpen()) return false;
    const int64_t size = file.GetSize();
    const int64_t records =
        size > static_cast<int64_t>(kHeaderSize)
            ? (size - static_cast<int64_t>(kHeaderSize)) / static_cast<int64_t>(recordSize)
            : 0;
    if (records <= 1) return ftruncate(file.GetFd(), 0) == 0;
    std::vector<uint8_t> rest(static_cast<std::size_t>(records - 1) * recordSize);
    file.Seek(static_cast<int64_t>(kHeaderSize + recordSize));
    if (file.Read(rest.data(), rest.size()) != static_cast<ssize_t>(rest.size())) return false;
    // The rest goes into a new file that takes the list's place whole: a list rewritten in
    // place and cut short (a full disk, a crash) would hold requests made of two halves.
    const Header header = MakeHeader(0, recordSize);
    LAtomicFile shorter(path);
    return shorter.IsOpen() && shorter.File().Write(header.data(), header.size()) &&
           shorter.File().Write(rest.data(), rest.size()) && shorter.Commit(kFileMode, true);
}

void Delete(const char* path) {
    unlink(path);
}

bool TakeRun(const char* path, LFile& held, const std::function<bool()>& stopped) {
    const std::string lock = std::string(path) + ".lock";
    held = LFile(open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kFileMode));
    if (!held.IsOpen()) return !stopped();
    for (bool told = false; flock(held.GetFd(), LOCK_EX | LOCK_NB) != 0; told = true) {
        if (errno != EWOULDBLOCK && errno != EINTR) return !stopped();
        if (stopped()) return false;
        if (!told) LOG("Another program is working through the queue %s; waiting for it", path);
        std::this_thread::sleep_for(std::chrono::milliseconds(kRunRetryMs));
    }
    return true;
}

} // namespace ProcessListFile
