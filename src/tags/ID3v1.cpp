// The ID3v1 block: the last 128 bytes of an MP3 file.
//   0 "TAG" | 3 title 30 | 33 artist 30 | 63 album 30 | 93 year 4 | 97 comment 28 |
//   125 zero | 126 track number | 127 genre
// Texts are ISO-8859-1. A block whose byte 125 is not zero is the older layout without a
// track number, with a 30-byte comment.

#include "tags/AudioTagData.h"
#include "tags/Genres.h"
#include "tags/MP3TagFile.h"
#include "tags/TagFile.h"
#include "tags/TagLock.h"
#include "tags/TagText.h"

#include <cctype>
#include <cstdlib>
#include <algorithm>
#include <cstring>
#include <mutex>

namespace {

constexpr std::size_t kBlockSize = 128;
constexpr std::size_t kTitle = 3, kArtist = 33, kAlbum = 63, kYear = 93, kComment = 97;
constexpr std::size_t kTrack = 126, kGenre = 127;
// Byte 127 when the store has no genre: outside every genre list, so that no program reads a
// genre the user never set (148 is "Abstract" in the extended lists).
constexpr uint8_t kNoGenre = 255;

bool HasBlock(const uint8_t* block) {
    return std::memcmp(block, "TAG", 3) == 0;
}

std::string FieldText(const uint8_t* field, std::size_t size) {
    const auto* text = reinterpret_cast<const char*>(field);
    const void* zero = std::memchr(text, 0, size);
    return LCopyFromISO88591(
        std::string_view(text, zero ? static_cast<const char*>(zero) - text : size));
}

// The value's bytes as stored, cut to the field.
void PutField(uint8_t* field, std::size_t size, const std::string& value) {
    std::memset(field, 0, size);
    std::memcpy(field, value.data(), std::min(value.size(), size));
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

void BuildID3v1Block(const LAudioTagData& tags, uint8_t* block) {
    std::memcpy(block, "TAG", 3);
    PutField(block + kTitle, 29, tags.GetTag("TITLE"));
    block[kTitle + 29] = 0;
    PutField(block + kArtist, 29, tags.GetTag("ARTIST"));
    block[kArtist + 29] = 0;
    PutField(block + kAlbum, 29, tags.GetTag("ALBUM"));
    block[kAlbum + 29] = 0;
    PutField(block + kYear, 4, tags.GetTag("YEAR"));
    PutField(block + kComment, 28, tags.GetTag("COMMENT"));
    block[kTrack - 1] = 0;
    if (tags.HasParm("TRACKNUMBER")) block[kTrack] = LeadingNumber(tags.GetTag("TRACKNUMBER"));
    block[kGenre] = GenreByte(tags.GetTag("GENRE"), block[kGenre]);
}

bool LAudioTagData::WriteTagsID3v1(const char* path) const {
    return RewriteMP3Tags(path, *this, true, false);
}
