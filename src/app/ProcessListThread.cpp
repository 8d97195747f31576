#include "app/ProcessListThread.h"

#include "platform/File.h"
#include "platform/Settings.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <vector>

LProcessListThread<LProcessConvert, MainProcessNotify> thrConvertList;

namespace ProcessListFile {

namespace {

using Header = std::array<uint8_t, kHeaderSize>;

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

} // namespace

bool Resume(const char* path, std::size_t recordSize, const DiscardHandler& discarded) {
    LFile file(_OpenReadWrite(path, kLockWaitMs));
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
    LFile file(_OpenAppendAlways(path, kLockWaitMs));
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
    LFile file(_OpenRead(path, kLockWaitMs));
    if (!file.IsOpen() || file.Seek(kHeaderSize) != static_cast<int64_t>(kHeaderSize)) return 0;
    const ssize_t got = file.Read(record, recordSize);
    return got > 0 ? static_cast<std::size_t>(got) : 0;
}

bool DropHead(const char* path, std::size_t recordSize) {
    LFile file(_OpenReadWrite(path, kLockWaitMs));
    if (!file.IsOpen()) return false;
    const int64_t size = file.GetSize();
    const int64_t records =
        size > static_cast<int64_t>(kHeaderSize)
            ? (size - static_cast<int64_t>(kHeaderSize)) / static_cast<int64_t>(recordSize)
            : 0;
    int64_t end = 0;
    if (records > 1) {
        std::vector<uint8_t> rest(static_cast<std::size_t>(records - 1) * recordSize);
        file.Seek(static_cast<int64_t>(kHeaderSize + recordSize));
        if (file.Read(rest.data(), rest.size()) != static_cast<ssize_t>(rest.size())) return false;
        const Header header = MakeHeader(0, recordSize);
        file.Seek(0);
        if (!file.Write(header.data(), header.size()) || !file.Write(rest.data(), rest.size()))
            return false;
        end = static_cast<int64_t>(kHeaderSize + rest.size());
    }
    return ftruncate(file.GetFd(), end) == 0;
}

void Delete(const char* path) {
    unlink(path);
}

} // namespace ProcessListFile
