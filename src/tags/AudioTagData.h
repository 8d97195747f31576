#pragma once

#include "tags/HashTable.h"

#include <cstdint>
#include <memory>
#include <string>

// Which wave chunks ReadTags and WriteTags use.
enum LWaveTagMode : int {
    tagModeListInfo = 0, // LIST INFO with a DISP title
    tagModeBWF = 1,      // the Broadcast Wave "bext" chunk
    tagModeCART = 2,     // the "cart" chunk
    tagModeAll = 3,      // all three
};

// Tag values are UTF-8 texts of at most this many bytes.
inline constexpr std::size_t kTagValueSize = 259;

// The descriptive data of one audio file: tags under standard upper-case names ("TITLE",
// "ARTIST", "TRACKNUMBER"...) in a fixed order, and an optional cover image file. Filled from
// a file's tags, edited, and written back. Every file operation takes LAudioTagLock().
class LAudioTagData : public LHashTable {
public:
    // Sets a tag. Without `overwrite` an existing non-empty value stays. The value is cut to
    // 259 bytes (never inside a character) and trimmed of white space; an empty result
    // removes the tag. New tags go to the end of the list.
    void SetTag(const char* name, const char* value, bool overwrite);
    // Copies the value into `out` (260 bytes); empty when the tag is absent.
    void GetTag(const char* name, char* out) const;
    std::string GetTag(const char* name) const { return GetParm(name, ""); }

    // With `takeTitle`, "TITLE" becomes the file name of the path (without extension); a
    // track number of 0 or more sets "TRACKNUMBER". Both overwrite.
    void SetCustomTagParms(const char* path, bool takeTitle, signed char trackNumber);

    // By the path's extension: ".mp3" reads ID3v2 then ID3v1; ".wav" reads the chunks of the
    // mode (all: cart, then bext, then LIST INFO; true when any was read). Other files: false.
    bool ReadTags(const char* path, int mode);
    // ".mp3" writes ID3v1 and ID3v2; ".wav" the chunks of the mode (all: true only when all
    // three were written). `codingHistory` adds a line describing the file to the bext coding
    // history.
    bool WriteTags(const char* path, int mode, bool codingHistory) const;
    // Writes a copy with SetCustomTagParms applied, with every wave chunk.
    bool WriteTags(const char* path, bool takeTitle, signed char trackNumber) const;

    // MP3: ID3v2 (versions 2.2 and 2.3) wins, ID3v1 only fills gaps. Writing writes ID3v1,
    // then, when that worked, an ID3v2.3 tag.
    bool ReadTagsMP3(const char* path);
    bool WriteTagsMP3(const char* path) const;
    bool ReadTagsID3v1(const char* path);
    bool WriteTagsID3v1(const char* path) const;
    bool ReadTagsID3v2(const char* path);
    bool WriteTagsID3v2(const char* path) const;

    // Wave LIST INFO and DISP. Reading is true when both were found.
    bool ReadTagsWAV(const char* path, bool overwrite);
    bool WriteTagsWav(const char* path) const;
    // The chunk sizes (size fields) of the LIST and DISP chunks WriteTagsWav would write.
    void CalculateHashLength(unsigned& listSize, unsigned& dispSize) const;

    // Wave bext and cart chunks, through the shared records _bwf and _cart.
    bool ReadTagsBWF(const char* path);
    bool WriteTagsBWF(const char* path, bool codingHistory) const;
    bool ReadTagsCART(const char* path);
    bool WriteTagsCART(const char* path) const;

    // The major version of the ID3v2 tag last read (2 or 3), 0 when none.
    uint8_t GetID3v2Version() const { return id3v2Version_; }
    // The cover image file written with the ID3v2 tag; empty for none.
    const std::string& GetImagePath() const { return imagePath_; }
    void SetImagePath(const std::string& path) {
        imagePath_ = path;
        ownedImage_.reset();
    }
    // Takes a cover image as a private temporary file of its own, removed when the last store
    // holding it goes. False when the file cannot be written.
    bool SetImageData(const uint8_t* data, std::size_t size);

private:
    uint8_t id3v2Version_ = 0;
    std::string imagePath_;
    std::shared_ptr<const std::string> ownedImage_; // removes the temporary image file
};
