// Building the ID3v2.3 tag this system writes: no extended header, no padding, no
// unsynchronisation; texts as UTF-16 with a byte-order mark.

#include "platform/FileOps.h"
#include "platform/Log.h"
#include "tags/AudioTagData.h"
#include "tags/Genres.h"
#include "tags/ID3v2.h"
#include "tags/TagFile.h"
#include "tags/TagNames.h"
#include "tags/TagText.h"

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>

namespace {

using Bytes = std::vector<uint8_t>;

void AppendBytes(Bytes& out, std::string_view bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

void AppendBE32(Bytes& out, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<uint8_t>(value >> shift));
}

void AppendFrame(Bytes& tag, const std::string& frameId, const Bytes& data) {
    AppendBytes(tag, frameId);
    AppendBE32(tag, static_cast<uint32_t>(data.size()));
    tag.push_back(0);
    tag.push_back(0);
    tag.insert(tag.end(), data.begin(), data.end());
}

// Encoding 1, byte-order mark FF FE, the text in UTF-16 little-endian, no terminator.
Bytes ID3v2WriteSimpleString(const std::string& text) {
    Bytes data{1, 0xFF, 0xFE};
    AppendBytes(data, LUTF8ToUTF16LE(text));
    return data;
}

uint32_t ParseNumber(const std::string& text) {
    return static_cast<uint32_t>(std::strtoul(text.c_str(), nullptr, 10));
}

// A known genre name becomes its number "(17)"; any other text has its "(" doubled so that
// it does not read as a number.
std::string GenreFrameText(const std::string& genre) {
    const int index = FindGenre(genre.c_str());
    if (index >= 0) {
        char number[16];
        std::snprintf(number, sizeof(number), "(%d)", index);
        return number;
    }
    std::string out;
    for (char c : genre) {
        out += c;
        if (c == '(') out += '(';
    }
    return out;
}

Bytes FrameData(const std::string& frameId, const std::string& value) {
    if (frameId == "COMM") {
        // Encoding 1, language "eng", empty description (mark and zero), then the text.
        Bytes data{1, 'e', 'n', 'g', 0xFF, 0xFE, 0, 0, 0xFF, 0xFE};
        AppendBytes(data, LUTF8ToUTF16LE(value));
        return data;
    }
    if (frameId == "WXXX") {
        Bytes data{0, 0};
        AppendBytes(data, LCopyToISO88591(value, std::string::npos));
        return data;
    }
    if (frameId == "PCNT") {
        Bytes data;
        AppendBE32(data, ParseNumber(value));
        return data;
    }
    if (frameId == "POPM") {
        const uint32_t rating = ParseNumber(value);
        return Bytes{0, static_cast<uint8_t>(rating > 255 ? 255 : rating)};
    }
    if (frameId == "TCON") return ID3v2WriteSimpleString(GenreFrameText(value));
    return ID3v2WriteSimpleString(value);
}

// Encoding 0, "image/jpeg", picture type 0 (other), empty description, the picture.
void AppendPicture(Bytes& tag, const std::string& imagePath) {
    Bytes image;
    if (!LoadFile(imagePath.c_str(), image, kTagFileWaitMs)) {
        LOGWARN("Cannot read the cover image %s", imagePath.c_str());
        return;
    }
    static constexpr uint8_t kHeader[] = {0,   'i', 'm', 'a', 'g', 'e', '/',
                                          'j', 'p', 'e', 'g', 0,   0,   0};
    Bytes data(std::begin(kHeader), std::end(kHeader));
    data.insert(data.end(), image.begin(), image.end());
    AppendFrame(tag, "APIC", data);
}

} // namespace

void ID3v2EncodeTagSize(uint8_t* out, uint32_t size) {
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<uint8_t>((size >> (7 * (3 - i))) & 0x7F);
}

std::vector<uint8_t> StoreTagID3v2(const LAudioTagData& tags, const std::vector<LID3v2Frame>& kept,
                                   bool picture) {
    Bytes tag{'I', 'D', '3', 3, 0, 0, 0, 0, 0, 0};
    for (const LHashTable::LHashNode& node : tags) {
        // The picture comes from the cover image file, never from a text.
        if (node.name == "IMAGE" || !IsHashTagAValidID3v2Tag(node.name)) continue;
        const std::string frameId = MapHashTagToID3v2Tag(node.name);
        // A user text frame needs a description this store does not keep.
        if (frameId == "TXXX") continue;
        AppendFrame(tag, frameId, FrameData(frameId, node.value));
    }
    for (const LID3v2Frame& frame : kept)
        AppendFrame(tag, frame.id, frame.data);
    if (picture && !tags.GetImagePath().empty()) AppendPicture(tag, tags.GetImagePath());
    ID3v2EncodeTagSize(tag.data() + 6, static_cast<uint32_t>(tag.size() - kID3v2HeaderSize));
    return tag;
}
