// Reading ID3v2.2 and ID3v2.3 tags from memory.

#include "platform/FileOps.h"
#include "tags/AudioTagData.h"
#include "tags/Genres.h"
#include "tags/ID3v2.h"
#include "tags/TagFile.h"
#include "tags/TagNames.h"
#include "tags/TagText.h"

#include <cstring>
#include <string>
#include <strings.h>

namespace {

enum TextEncoding : uint8_t { encLatin1 = 0, encUTF16 = 1, encUTF16BE = 2, encUTF8 = 3 };

// Header flags.
constexpr uint8_t kFlagUnsynchronisation = 0x80;
constexpr uint8_t kFlagExtendedHeader = 0x40; // version 2.2: compression
// Second frame flag byte of version 2.3.
constexpr uint8_t kFrameCompressed = 0x80;
constexpr uint8_t kFrameEncrypted = 0x40;
constexpr uint8_t kFrameGrouped = 0x20;
// Second frame flag byte of version 2.4.
constexpr uint8_t kFrame4Grouped = 0x40;
constexpr uint8_t kFrame4Compressed = 0x08;
constexpr uint8_t kFrame4Encrypted = 0x04;
constexpr uint8_t kFrame4Unsynchronised = 0x02;
constexpr uint8_t kFrame4DataLength = 0x01;

uint32_t GetBE(const uint8_t* p, std::size_t bytes) {
    uint32_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i)
        value = (value << 8) | p[i];
    return value;
}

bool IsWide(uint8_t encoding) {
    return encoding == encUTF16 || encoding == encUTF16BE;
}

// The length of a string that ends with its encoding's terminator (one zero byte, or a zero
// 16-bit unit for UTF-16), terminator not counted; the whole size when there is none.
std::size_t StringLength(uint8_t encoding, const uint8_t* p, std::size_t size) {
    if (!IsWide(encoding)) {
        // An empty frame's data may be no pointer at all.
        const void* zero = size > 0 ? std::memchr(p, 0, size) : nullptr;
        return zero ? static_cast<const uint8_t*>(zero) - p : size;
    }
    for (std::size_t i = 0; i + 1 < size; i += 2)
        if (p[i] == 0 && p[i + 1] == 0) return i;
    return size;
}

// The bytes a terminated string takes, terminator included.
std::size_t StringSpan(uint8_t encoding, const uint8_t* p, std::size_t size) {
    const std::size_t length = StringLength(encoding, p, size);
    const std::size_t terminator = IsWide(encoding) ? 2 : 1;
    return length + terminator <= size ? length + terminator : size;
}

// A string of the frame in UTF-8, cut to the longest value the store keeps. False for an
// encoding this reader does not take: UTF-16 without byte-order mark, and big-endian UTF-16
// (which only later versions define).
bool DecodeString(uint8_t encoding, const uint8_t* p, std::size_t size, std::string& out) {
    const std::size_t length = StringLength(encoding, p, size);
    switch (encoding) {
    case encLatin1:
        out = LCopyFromISO88591(std::string_view(reinterpret_cast<const char*>(p), length));
        break;
    case encUTF8:
        out = LTextFromFileField(reinterpret_cast<const char*>(p), length);
        break;
    case encUTF16:
        if (length < 2) {
            out.clear();
        } else if (p[0] == 0xFE && p[1] == 0xFF) {
            out = LUTF16ToUTF8(p + 2, length - 2, true);
        } else if (p[0] == 0xFF && p[1] == 0xFE) {
            out = LUTF16ToUTF8(p + 2, length - 2, false);
        } else {
            return false;
        }
        break;
    default:
        return false;
    }
    out.resize(LUTF8CutLength(out, kTagValueSize));
    return true;
}

void Store(LAudioTagData& tags, const char* name, const std::string& value) {
    if (!value.empty()) tags.SetParm(name, value.c_str());
}

// "(17)" names genre 17 of the ID3v1 list; "((" stands for a "(" that starts a text.
std::string GenreText(const std::string& text) {
    if (text.size() > 1 && text[0] == '(' && text[1] != '(') {
        std::size_t end = 1;
        unsigned number = 0;
        while (end < text.size() && end < 5 && text[end] >= '0' && text[end] <= '9')
            number = number * 10 + static_cast<unsigned>(text[end++] - '0');
        if (end > 1 && number < kNumGenres) return _Genres[number];
    }
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        out += text[i];
        if (text[i] == '(' && i + 1 < text.size() && text[i + 1] == '(') ++i;
    }
    return out;
}

void ReadTextFrame(const std::string& frameId, const uint8_t* data, std::size_t size,
                   LAudioTagData& tags) {
    std::string text;
    if (size < 1 || !DecodeString(data[0], data + 1, size - 1, text)) return;
    if (frameId == "TCON") text = GenreText(text);
    Store(tags, MapID3v2TagToHashTag(frameId).c_str(), text);
}

// Encoding, language, description, text. A comment with a description is a note some program
// keeps for itself; it is taken only while there is no plain comment.
void ReadComment(const uint8_t* data, std::size_t size, LAudioTagData& tags) {
    if (size < 4) return;
    const uint8_t encoding = data[0];
    std::string description, text;
    const std::size_t span = StringSpan(encoding, data + 4, size - 4);
    const bool plain = DecodeString(encoding, data + 4, span, description) && description.empty();
    if (!DecodeString(encoding, data + 4 + span, size - 4 - span, text)) return;
    if (plain || !tags.HasParm("COMMENT")) Store(tags, "COMMENT", text);
}

// Encoding, description, then the URL in ISO-8859-1.
void ReadUserURL(const uint8_t* data, std::size_t size, LAudioTagData& tags) {
    if (size < 1) return;
    const std::size_t span = StringSpan(data[0], data + 1, size - 1);
    std::string url;
    DecodeString(encLatin1, data + 1 + span, size - 1 - span, url);
    Store(tags, "URL", url);
}

// E-mail, rating byte, optional play counter.
void ReadPopularimeter(const uint8_t* data, std::size_t size, LAudioTagData& tags) {
    const std::size_t span = StringSpan(encLatin1, data, size);
    if (span >= size) return;
    Store(tags, "RATING", std::to_string(data[span]));
}

void ReadPlayCounter(const uint8_t* data, std::size_t size, LAudioTagData& tags) {
    if (size < 4) return;
    Store(tags, "PLAYCOUNT", std::to_string(GetBE(data, 4)));
}

// Encoding, MIME type, picture type, description, picture. Only JPEG pictures are kept.
void ReadPicture(const uint8_t* data, std::size_t size, LAudioTagData& tags) {
    if (size < 1 || (data[0] != encLatin1 && data[0] != encUTF8)) return;
    std::size_t pos = 1;
    const std::size_t mimeLength = StringLength(encLatin1, data + pos, size - pos);
    const std::string mime(reinterpret_cast<const char*>(data + pos), mimeLength);
    pos += mimeLength + 1;
    const std::size_t slash = mime.find('/');
    if (slash == std::string::npos || strcasecmp(mime.c_str() + slash + 1, "jpeg") != 0) return;
    pos += 1; // picture type
    if (pos >= size) return;
    pos += StringLength(encLatin1, data + pos, size - pos) + 1;
    if (pos >= size) return;
    tags.SetImageData(data + pos, size - pos);
}

void AddTagID3v2(const std::string& frameId, const uint8_t* data, std::size_t size,
                 LAudioTagData& tags) {
    if (frameId == "TXXX" || frameId == "TXX") return;
    // Version 2.4 keeps the year in its recording time, "2010-07-05T10:00".
    if (frameId == "TDRC") {
        std::string text;
        if (size >= 1 && DecodeString(data[0], data + 1, size - 1, text))
            Store(tags, "YEAR", text.substr(0, 4));
        return;
    }
    if (frameId[0] == 'T')
        ReadTextFrame(frameId, data, size, tags);
    else if (frameId == "COMM")
        ReadComment(data, size, tags);
    else if (frameId == "WXXX")
        ReadUserURL(data, size, tags);
    else if (frameId == "POPM")
        ReadPopularimeter(data, size, tags);
    else if (frameId == "PCNT")
        ReadPlayCounter(data, size, tags);
    else if (frameId == "APIC")
        ReadPicture(data, size, tags);
}

bool IsFrameIdCharacter(uint8_t c) {
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// One frame header: the ID (mapped to its version 2.3 ID), the data size and the flags.
struct FrameDescription {
    std::string id;
    std::size_t headerSize = 0;
    std::size_t dataSize = 0;
    uint8_t formatFlags = 0;
};

// False at the end of the frames: too few bytes left, an ID that is not one (padding), or a
// frame that would run past the tag. Version 2.4 sizes are sync-safe.
bool GetID3v2FrameDescription(const uint8_t* p, std::size_t left, uint8_t version,
                              FrameDescription& frame) {
    const std::size_t idSize = version == 2 ? 3 : 4;
    frame.headerSize = version == 2 ? 6 : 10;
    if (left < frame.headerSize) return false;
    for (std::size_t i = 0; i < idSize; ++i)
        if (!IsFrameIdCharacter(p[i])) return false;
    const std::string id(reinterpret_cast<const char*>(p), idSize);
    frame.id = version == 2 ? MapHashTagToID3v2Minor2ToMinor3Tag(id) : id;
    frame.dataSize = version == 4 ? ID3v2DecodeTagSize(p + 4) : GetBE(p + idSize, idSize);
    frame.formatFlags = version == 2 ? 0 : p[9];
    return frame.dataSize <= left - frame.headerSize;
}

// Undoes the unsynchronisation of a tag body: every FF 00 stands for FF.
std::vector<uint8_t> Resynchronise(const uint8_t* data, std::size_t size) {
    std::vector<uint8_t> out;
    out.reserve(size);
    for (std::size_t i = 0; i < size; ++i) {
        out.push_back(data[i]);
        if (data[i] == 0xFF && i + 1 < size && data[i + 1] == 0) ++i;
    }
    return out;
}

} // namespace

int64_t ID3v2TagBodySize(const uint8_t* header) {
    if (std::memcmp(header, "ID3", 3) != 0 || header[3] == 0xFF || header[4] == 0xFF) return -1;
    for (int i = 6; i < 10; ++i)
        if (header[i] >= 0x80) return -1;
    return ID3v2DecodeTagSize(header + 6);
}

uint32_t ID3v2DecodeTagSize(const uint8_t* size) {
    return (uint32_t{size[0]} << 21) | (uint32_t{size[1]} << 14) | (uint32_t{size[2]} << 7) |
           size[3];
}

std::vector<LID3v2Frame> ReadID3v2Frames(const uint8_t* data, std::size_t size, bool& valid) {
    std::vector<LID3v2Frame> frames;
    valid = false;
    if (size < kID3v2HeaderSize) return frames;
    const int64_t bodySize = ID3v2TagBodySize(data);
    const uint8_t version = data[3];
    const uint8_t flags = data[5];
    if (bodySize < 0 || version < 2 || version > 4 ||
        static_cast<uint64_t>(bodySize) > size - kID3v2HeaderSize)
        return frames;
    // A compressed version 2.2 tag has no defined compression; its frames cannot be read.
    if (version == 2 && (flags & kFlagExtendedHeader)) return frames;
    valid = true;

    const uint8_t* body = data + kID3v2HeaderSize;
    std::vector<uint8_t> resynchronised;
    std::size_t bodyLength = static_cast<std::size_t>(bodySize);
    // Version 2.4 undoes the unsynchronisation frame by frame.
    if ((flags & kFlagUnsynchronisation) && version < 4) {
        resynchronised = Resynchronise(body, bodyLength);
        body = resynchronised.data();
        bodyLength = resynchronised.size();
    }

    std::size_t pos = 0;
    if (version >= 3 && (flags & kFlagExtendedHeader)) {
        if (bodyLength < 4) return frames;
        // Version 2.4 counts the size field in, as a sync-safe number.
        const uint64_t extended =
            version == 4 ? uint64_t{ID3v2DecodeTagSize(body)} : 4 + uint64_t{GetBE(body, 4)};
        if (extended > bodyLength) return frames;
        pos = static_cast<std::size_t>(extended);
    }

    FrameDescription frame;
    while (GetID3v2FrameDescription(body + pos, bodyLength - pos, version, frame)) {
        const uint8_t* frameData = body + pos + frame.headerSize;
        std::size_t frameSize = frame.dataSize;
        pos += frame.headerSize + frame.dataSize;
        const uint8_t packed = version == 4 ? kFrame4Compressed | kFrame4Encrypted
                                            : kFrameCompressed | kFrameEncrypted;
        if (frame.formatFlags & packed) continue;
        std::vector<uint8_t> bytes(frameData, frameData + frameSize);
        if (version == 4 && (frame.formatFlags & kFrame4Unsynchronised))
            bytes = Resynchronise(bytes.data(), bytes.size());
        const bool grouped =
            frame.formatFlags & (version == 4 ? kFrame4Grouped : kFrameGrouped);
        std::size_t skip = grouped ? 1 : 0;
        if (version == 4 && (frame.formatFlags & kFrame4DataLength)) skip += 4;
        if (skip > bytes.size()) continue;
        bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(skip));
        frames.push_back({frame.id, std::move(bytes)});
    }
    return frames;
}

bool ParseTagID3v2(const uint8_t* data, std::size_t size, LAudioTagData& tags) {
    bool valid = false;
    for (const LID3v2Frame& frame : ReadID3v2Frames(data, size, valid))
        AddTagID3v2(frame.id, frame.data.data(), frame.data.size(), tags);
    return valid;
}
