#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class LAudioTagData;

// ID3v2 tags at the start of MP3 files. The header is "ID3", major version, revision, flags
// and the size of what follows the header as four 7-bit groups ("sync-safe").
inline constexpr std::size_t kID3v2HeaderSize = 10;

// The size field of a header, or -1 when `header` is not a usable ID3v2 header ("ID3",
// version bytes not 255, size bytes below 128).
int64_t ID3v2TagBodySize(const uint8_t* header);
uint32_t ID3v2DecodeTagSize(const uint8_t* size);
void ID3v2EncodeTagSize(uint8_t* out, uint32_t size);

#include <string>

// One frame of a tag, as version 2.3 writes it: the ID (version 2.2 IDs mapped) and the data,
// with what versions 2.2 and 2.4 add around it (unsynchronisation, group and length bytes)
// undone.
struct LID3v2Frame {
    std::string id;
    std::vector<uint8_t> data;
};

// The frames of a whole version 2.2, 2.3 or 2.4 tag (header included, `size` bytes); frames
// that are compressed or encrypted are left out. `valid` is false when the data is not such a
// tag.
std::vector<LID3v2Frame> ReadID3v2Frames(const uint8_t* data, std::size_t size, bool& valid);

// Reads the frames of a whole version 2.2, 2.3 or 2.4 tag (header included, `size` bytes) into
// the store. Frames that cannot be understood are skipped; a frame ID that is not made of A-Z and
// 0-9, or a frame that runs past the tag, ends it. False when the data is not such a tag.
// A JPEG picture becomes the store's cover image, a private temporary file.
bool ParseTagID3v2(const uint8_t* data, std::size_t size, LAudioTagData& tags);

// The ID3v2.3 tag for the store (header included): a frame for each tag that has one, the
// `kept` frames, then (when `picture`) the cover image.
std::vector<uint8_t> StoreTagID3v2(const LAudioTagData& tags,
                                   const std::vector<LID3v2Frame>& kept = {},
                                   bool picture = true);

