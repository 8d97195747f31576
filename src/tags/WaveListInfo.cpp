// Wave tags in a LIST INFO chunk, with the title also in a DISP chunk right after it.
//   "LIST" size "INFO" { sub-chunk ID, size = text + 1, text, 0, pad to even }...
//   "DISP" size 1 (text) title 0 pad to even

#include "codecs/WaveBytes.h"
#include "tags/AudioTagData.h"
#include "tags/RiffChunks.h"
#include "tags/TagFile.h"
#include "tags/TagLock.h"
#include "tags/TagText.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <strings.h>

namespace {

struct ListSubChunk {
    const char* tag;
    const char* id;
};

constexpr ListSubChunk kListSubChunks[] = {
    {"TITLE", "INAM"},     {"ARTIST", "IART"},      {"ALBUM", "IPRD"},    {"YEAR", "ICRD"},
    {"COMMENT", "ICMT"},   {"TRACKNUMBER", "ITRK"}, {"GENRE", "IGNR"},    {"COPYRIGHT", "ICOP"},
    {"ENCODEDBY", "ISRC"}, {"ENCODER", "ISFT"},     {"CATEGORY", "ISBJ"},
};

// The sub-chunk of a tag; four spaces for a tag that has none.
const char* MapHashTagToListSubChunkID(const std::string& tag) {
    for (const ListSubChunk& row : kListSubChunks)
        if (tag == row.tag) return row.id;
    return "    ";
}

// The tag of a sub-chunk; "NULL" for one this system does not know.
const char* MapListSubChunkIDToHashTag(const uint8_t* id) {
    for (const ListSubChunk& row : kListSubChunks)
        if (std::memcmp(id, row.id, 4) == 0) return row.tag;
    return "NULL";
}

// Sub-chunks of more than this many bytes (rounded up to even) are not read.
constexpr uint32_t kMaxSubChunkSize = 259;
// So texts written are cut to a length whose sub-chunk stays readable: text, zero and pad
// within 258 bytes.
constexpr std::size_t kMaxInfoText = 257;
constexpr std::size_t kMaxTitleText = 519;
constexpr uint32_t kDispText = 1;

std::string_view CutText(const std::string& value, std::size_t maxBytes) {
    return std::string_view(value).substr(0, LUTF8CutLength(value, maxBytes));
}

// Text with its zero, padded to even.
uint32_t PaddedTextSize(std::size_t length) {
    return static_cast<uint32_t>((length + 2) & ~std::size_t{1});
}

void AppendText(std::vector<uint8_t>& out, std::string_view text) {
    out.insert(out.end(), text.begin(), text.end());
    out.resize(out.size() + PaddedTextSize(text.size()) - text.size());
}

void AppendHeader(std::vector<uint8_t>& out, const char* id, uint32_t size) {
    uint8_t header[8];
    PutChunkId(header, id);
    PutLE32(header + 4, size);
    out.insert(out.end(), header, header + 8);
}

bool IsInfoList(LFile& file, const LRiffChunk& chunk) {
    char type[5] = {};
    return chunk.Is("LIST") && chunk.size >= 4 && ReadAt(file, chunk.DataOffset(), type, 4) &&
           strcasecmp(type, "INFO") == 0;
}

} // namespace

bool LAudioTagData::ReadTagsWAV(const char* path, bool overwrite) {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    LFile file = OpenTagFileRead(path);
    LWaveChunks chunks;
    if (!file.IsOpen() || !chunks.Read(file)) return false;

    bool info = false, disp = false;
    for (const LRiffChunk& chunk : chunks.GetChunks()) {
        if (chunk.Is("LIST")) {
            if (chunk.size > chunks.GetFileSize()) return false;
            if (!IsInfoList(file, chunk)) continue;
            std::vector<uint8_t> list(chunk.size - 4);
            if (!ReadAt(file, chunk.DataOffset() + 4, list.data(), list.size())) return false;
            for (std::size_t pos = 0; pos + 8 <= list.size();) {
                const uint32_t size = GetLE32(list.data() + pos + 4);
                const uint32_t rounded = (size + 1) & ~1u;
                if (rounded > kMaxSubChunkSize || pos + 8 + size > list.size()) return false;
                const std::string text =
                    LTextFromFileField(reinterpret_cast<const char*>(&list[pos + 8]), size);
                SetTag(MapListSubChunkIDToHashTag(&list[pos]), text.c_str(), overwrite);
                pos += 8 + rounded;
            }
            info = true;
        } else if (chunk.Is("DISP") && chunk.size >= 4) {
            // Only a text display (type 1); other types hold pictures or sounds.
            const std::size_t size = std::min<std::size_t>(chunk.size, 4 + kMaxTitleText + 1);
            std::vector<uint8_t> data(size);
            if (!ReadAt(file, chunk.DataOffset(), data.data(), size)) return false;
            if (GetLE32(data.data()) != kDispText) continue;
            const std::string title =
                LTextFromFileField(reinterpret_cast<const char*>(data.data() + 4), size - 4);
            SetTag("TITLE", title.c_str(), overwrite);
            disp = true;
        }
    }
    return info && disp;
}

void LAudioTagData::CalculateHashLength(unsigned& listSize, unsigned& dispSize) const {
    listSize = 4;
    for (const LHashNode& node : *this) {
        if (node.value.empty() || MapHashTagToListSubChunkID(node.name)[0] == ' ') continue;
        listSize += 8 + PaddedTextSize(CutText(node.value, kMaxInfoText).size());
    }
    dispSize = 4 + PaddedTextSize(CutText(GetTag("TITLE"), kMaxTitleText).size());
}

bool LAudioTagData::WriteTagsWav(const char* path) const {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    LFile file = OpenTagFileReadWrite(path);
    LWaveChunks chunks;
    if (!file.IsOpen() || !chunks.Read(file)) return false;
    std::vector<std::size_t> old;
    for (std::size_t i = 0; i < chunks.GetChunks().size(); ++i) {
        const LRiffChunk& chunk = chunks.GetChunks()[i];
        if (chunk.Is("DISP") || IsInfoList(file, chunk)) old.push_back(i);
    }

    unsigned listSize = 0, dispSize = 0;
    CalculateHashLength(listSize, dispSize);
    std::vector<uint8_t> bytes;
    AppendHeader(bytes, "LIST", listSize);
    bytes.insert(bytes.end(), {'I', 'N', 'F', 'O'});
    for (const LHashNode& node : *this) {
        const char* id = MapHashTagToListSubChunkID(node.name);
        if (node.value.empty() || id[0] == ' ') continue;
        const std::string_view text = CutText(node.value, kMaxInfoText);
        AppendHeader(bytes, id, static_cast<uint32_t>(text.size() + 1));
        AppendText(bytes, text);
    }
    AppendHeader(bytes, "DISP", dispSize);
    bytes.insert(bytes.end(), {1, 0, 0, 0});
    AppendText(bytes, CutText(GetTag("TITLE"), kMaxTitleText));

    return chunks.ReplaceChunks(file, old, {listSize, dispSize}, bytes);
}
