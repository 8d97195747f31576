#include "tags/AudioTagData.h"
#include "tags/ID3v2.h"
#include "tags/MP3TagFile.h"
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
    if (bodySize < 0 || header[3] < 2 || header[3] > 4) return false;
    // A tag that claims to run past the end of the file is damaged.
    if (static_cast<int64_t>(kID3v2HeaderSize) + bodySize > file.GetSize()) return false;

    std::vector<uint8_t> tag(kID3v2HeaderSize + static_cast<std::size_t>(bodySize));
    if (!ReadAt(file, 0, tag.data(), tag.size())) return false;
    if (!ParseTagID3v2(tag.data(), tag.size(), *this)) return false;
    id3v2Version_ = header[3];
    return true;
}

bool LAudioTagData::WriteTagsID3v2(const char* path) const {
    return RewriteMP3Tags(path, *this, false, true);
}
