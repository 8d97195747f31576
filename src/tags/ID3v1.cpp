// The ID3v1 block: the last 128 bytes of an MP3 file.
//   0 "TAG" | 3 title 30 | 33 artist 30 | 63 album 30 | 93 year 4 | 97 comment 28 |
//   125 zero | 126 track number | 127 genre
// Texts are ISO-8859-1. A block whose byte 125 is not zero is the older layout without a
// track number, with a 30-byte comment.

#include "tags/AudioTagData.h"
#include "tags/Genres.h"
#include "tags/TagFile.h"
#include "tags/TagLock.h"
#include "tags/TagText.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace {

constexpr std::size_t kBlockSize = 128;
constexpr std::size_t kTitle = 3, kArtist = 33, kAlbum = 63, kYear = 93, kComment = 97;
constexpr std::size_t kTrack = 126, kGenre = 127;
// Byte 127 when the store has no genre.
constexpr uint8_t kNoGenre = 148;

bool HasBlock(const uint8_t* block) {
    return std::memcmp(block, "TAG", 3) == 0;
}

std::string FieldText(const uint8_t* field, std::size_t size) {
    const auto* text = reinterpret_cast<const char*>(field);
    const void* zero = std::memchr(text, 0, size);
    return LCopyFromISO88591(
        std::string_view(text, zero ? static_cast<const char*>(zero) - text : size));
}

void PutField(uint8_t* field, std::size_t size, const std::string& value) {
    std::memset(field, 0, size);
    const std::string latin1 = LCopyToISO88591(value, size);
    std::memcpy(field, latin1.data(), latin1.size());
}

// A decimal number at the start of the value ("3/12" gives 3), at most 255.
uint8_t LeadingNumber(const std::string& value) {
    const long number = std::strtol(value.c_str(), nullptr, 10);
    return static_cast<uint8_t>(number < 0 ? 0 : number > 255 ? 255 : number);
}

uint8_t GenreByte(const std::string& genre, uint8_t oldByte) {
    if (genre.empty()) return kNoGenre;
    if (std::isdigit(static_cast<unsigned char>(genre[0]))) return LeadingNumber(genre);
    const int index = FindGenre(genre.c_str());
    return index >= 0 ? static_cast<uint8_t>(index) : oldByte;
}

} // namespace

bool LAudioTagData::ReadTagsID3v1(const char* path) {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    LFile file = OpenTagFileRead(path);
    if (!file.IsOpen()) return false;
    const int64_t size = file.GetSize();
    uint8_t block[kBlockSize];
    if (size < static_cast<int64_t>(kBlockSize) ||
        !ReadAt(file, size - static_cast<int64_t>(kBlockSize), block, kBlockSize) ||
        !HasBlock(block))
        return false;

    SetTag("TITLE", FieldText(block + kTitle, 30).c_str(), false);
    SetTag("ARTIST", FieldText(block + kArtist, 30).c_str(), false);
    SetTag("ALBUM", FieldText(block + kAlbum, 30).c_str(), false);
    const bool hasTrack = block[kTrack - 1] == 0;
    SetTag("COMMENT", FieldText(block + kComment, hasTrack ? 28 : 30).c_str(), false);
    if (block[kYear] != 0) SetTag("YEAR", FieldText(block + kYear, 4).c_str(), false);
    if (hasTrack && block[kTrack] != 0)
        SetTag("TRACKNUMBER", std::to_string(block[kTrack]).c_str(), false);
    if (block[kGenre] < kNumGenres) SetTag("GENRE", _Genres[block[kGenre]], false);
    return true;
}

bool LAudioTagData::WriteTagsID3v1(const char* path) const {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    LFile file = OpenTagFileReadWrite(path);
    if (!file.IsOpen()) return false;
    const int64_t size = file.GetSize();
    if (size < 0) return false;

    uint8_t block[kBlockSize] = {};
    int64_t offset = size;
    if (size >= static_cast<int64_t>(kBlockSize)) {
        uint8_t old[kBlockSize];
        if (!ReadAt(file, size - static_cast<int64_t>(kBlockSize), old, kBlockSize)) return false;
        if (HasBlock(old)) {
            std::memcpy(block, old, kBlockSize);
            offset = size - static_cast<int64_t>(kBlockSize);
        }
    }

    std::memcpy(block, "TAG", 3);
    PutField(block + kTitle, 29, GetTag("TITLE"));
    block[kTitle + 29] = 0;
    PutField(block + kArtist, 29, GetTag("ARTIST"));
    block[kArtist + 29] = 0;
    PutField(block + kAlbum, 29, GetTag("ALBUM"));
    block[kAlbum + 29] = 0;
    PutField(block + kYear, 4, GetTag("YEAR"));
    PutField(block + kComment, 28, GetTag("COMMENT"));
    block[kTrack - 1] = 0;
    if (HasParm("TRACKNUMBER")) block[kTrack] = LeadingNumber(GetTag("TRACKNUMBER"));
    block[kGenre] = GenreByte(GetTag("GENRE"), block[kGenre]);
    return WriteAt(file, offset, block, kBlockSize);
}
