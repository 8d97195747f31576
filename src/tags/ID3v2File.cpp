#include "tags/AudioTagData.h"
#include "tags/ID3v2.h"
#include "tags/TagFile.h"
#include "tags/TagLock.h"

#include <mutex>

bool LAudioTagData::ReadTagsID3v2(const char* path) {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    LFile file = OpenTagFileRead(path);
    if (!file.IsOpen()) return false;
    uint8_t header[kID3v2HeaderSize];
    if (!ReadAt(file, 0, header, sizeof(header))) return false;
    const int64_t bodySize = ID3v2TagBodySize(header);
    if (bodySize < 0 || (header[3] != 2 && header[3] != 3)) return false;
    // A tag that claims to run past the end of the file is damaged.
    if (static_cast<int64_t>(kID3v2HeaderSize) + bodySize > file.GetSize()) return false;

    std::vector<uint8_t> tag(kID3v2HeaderSize + static_cast<std::size_t>(bodySize));
    if (!ReadAt(file, 0, tag.data(), tag.size())) return false;
    if (!ParseTagID3v2(tag.data(), tag.size(), *this)) return false;
    id3v2Version_ = header[3];
    return true;
}

bool LAudioTagData::WriteTagsID3v2(const char* path) const {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    LFile file = OpenTagFileReadWrite(path);
    if (!file.IsOpen()) return false;
    const int64_t fileSize = file.GetSize();
    if (fileSize < 0) return false;

    // Everything after an old tag is kept; without one, the whole file.
    int64_t keepFrom = 0;
    uint8_t header[kID3v2HeaderSize];
    if (fileSize >= static_cast<int64_t>(kID3v2HeaderSize)) {
        if (!ReadAt(file, 0, header, sizeof(header))) return false;
        const int64_t bodySize = ID3v2TagBodySize(header);
        if (bodySize >= 0 && static_cast<int64_t>(kID3v2HeaderSize) + bodySize <= fileSize)
            keepFrom = static_cast<int64_t>(kID3v2HeaderSize) + bodySize;
    }

    const std::vector<uint8_t> tag = StoreTagID3v2(*this);
    const int64_t tagSize = static_cast<int64_t>(tag.size());
    if (tagSize == keepFrom) return WriteAt(file, 0, tag.data(), tag.size());

    std::vector<uint8_t> kept(static_cast<std::size_t>(fileSize - keepFrom));
    if (!ReadAt(file, keepFrom, kept.data(), kept.size())) return false;
    return WriteAt(file, 0, tag.data(), tag.size()) &&
           WriteAt(file, tagSize, kept.data(), kept.size()) &&
           Truncate(file, tagSize + static_cast<int64_t>(kept.size()));
}
