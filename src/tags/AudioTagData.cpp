#include "tags/AudioTagData.h"

#include "codecs/AudioFileTypes.h"
#include "platform/File.h"
#include "platform/Paths.h"
#include "tags/MP3TagFile.h"
#include "tags/TagLock.h"
#include "tags/TagText.h"

#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <mutex>
#include <strings.h>

namespace {

enum class TagFileKind { other, mp3, wave };

TagFileKind GetTagFileKind(const char* path) {
    const LAudioFileType* type = LFindAudioFileType(path);
    if (!type) return TagFileKind::other;
    return type->tags == LAudioTagKind::id3 ? TagFileKind::mp3 : TagFileKind::wave;
}

} // namespace

void LAudioTagData::SetTag(const char* name, const char* value, bool overwrite) {
    if (!overwrite && GetParm(name, "")[0] != 0) return;
    std::string_view text(value);
    text = LTrimSpaces(text.substr(0, LUTF8CutLength(text, kTagValueSize)));
    if (text.empty())
        DeleteParm(name);
    else
        SetParmBottom(name, std::string(text).c_str());
}

void LAudioTagData::GetTag(const char* name, char* out) const {
    const std::string_view value = GetParm(name, "");
    const std::size_t length = LUTF8CutLength(value, kTagValueSize);
    std::memcpy(out, value.data(), length);
    out[length] = 0;
}

void LAudioTagData::SetCustomTagParms(const char* path, bool takeTitle, signed char trackNumber) {
    if (takeTitle) {
        char title[kPathBufferSize];
        _GetFileNameFromPath(title, path);
        SetTag("TITLE", title, true);
    }
    if (trackNumber >= 0) SetTag("TRACKNUMBER", std::to_string(trackNumber).c_str(), true);
}

bool LAudioTagData::ReadTags(const char* path, int mode) {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    switch (GetTagFileKind(path)) {
    case TagFileKind::mp3:
        return ReadTagsMP3(path);
    case TagFileKind::wave:
        switch (mode) {
        case tagModeListInfo:
            return ReadTagsWAV(path, true);
        case tagModeBWF:
            return ReadTagsBWF(path);
        case tagModeCART:
            return ReadTagsCART(path);
        case tagModeAll: {
            const bool cart = ReadTagsCART(path);
            const bool bext = ReadTagsBWF(path);
            const bool info = ReadTagsWAV(path, true);
            return cart || bext || info;
        }
        default:
            return false;
        }
    case TagFileKind::other:
        break;
    }
    return false;
}

bool LAudioTagData::WriteTags(const char* path, int mode, bool codingHistory) const {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    switch (GetTagFileKind(path)) {
    case TagFileKind::mp3:
        return WriteTagsMP3(path);
    case TagFileKind::wave:
        switch (mode) {
        case tagModeListInfo:
            return WriteTagsWav(path);
        case tagModeBWF:
            return WriteTagsBWF(path, codingHistory);
        case tagModeCART:
            return WriteTagsCART(path);
        case tagModeAll: {
            const bool info = WriteTagsWav(path);
            const bool bext = WriteTagsBWF(path, codingHistory);
            const bool cart = WriteTagsCART(path);
            return info && bext && cart;
        }
        default:
            return false;
        }
    case TagFileKind::other:
        break;
    }
    return false;
}

bool LAudioTagData::WriteTags(const char* path, bool takeTitle, signed char trackNumber) const {
    LAudioTagData copy(*this);
    copy.SetCustomTagParms(path, takeTitle, trackNumber);
    return copy.WriteTags(path, tagModeAll, false);
}

bool LAudioTagData::ReadTagsMP3(const char* path) {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    const bool id3v2 = ReadTagsID3v2(path);
    const bool id3v1 = ReadTagsID3v1(path);
    return id3v2 || id3v1;
}

bool LAudioTagData::WriteTagsMP3(const char* path) const {
    return RewriteMP3Tags(path, *this, true, true);
}

bool LAudioTagData::SetImageData(const uint8_t* data, std::size_t size) {
    char path[] = "/var/tmp/vinora-cover-XXXXXX.jpg";
    const int fd = mkostemps(path, 4, O_CLOEXEC);
    if (fd < 0) return false;
    LFile file(fd);
    const bool written = file.Write(data, size);
    file.Close();
    auto owned = std::shared_ptr<const std::string>(new std::string(path), [](const std::string* p) {
        unlink(p->c_str());
        delete p;
    });
    if (!written) return false;
    imagePath_ = path;
    ownedImage_ = std::move(owned);
    return true;
}
