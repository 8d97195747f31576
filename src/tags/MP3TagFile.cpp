#include "tags/MP3TagFile.h"

#include "platform/AtomicFile.h"
#include "platform/FileOps.h"
#include "tags/AudioTagData.h"
#include "tags/ID3v2.h"
#include "tags/TagFile.h"
#include "tags/TagLock.h"
#include "tags/TagText.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <strings.h>

namespace {

constexpr std::size_t kBlockSize = 128;
constexpr std::size_t kCopyChunk = 65536;

enum : uint8_t { encLatin1 = 0, encUTF16 = 1, encUTF16BE = 2, encUTF8 = 3 };

using Bytes = std::vector<uint8_t>;

// Splits UTF-8 data at its first zero byte: the string, and where the rest starts.
std::pair<std::string, std::size_t> TakeUTF8(const Bytes& data, std::size_t from) {
    const auto zero = std::find(data.begin() + static_cast<std::ptrdiff_t>(from), data.end(), 0);
    const std::string text(data.begin() + static_cast<std::ptrdiff_t>(from), zero);
    return {text, zero == data.end() ? data.size() : static_cast<std::size_t>(zero - data.begin()) + 1};
}

void AppendWide(Bytes& out, const std::string& text, bool terminated) {
    out.insert(out.end(), {0xFF, 0xFE});
    const std::string wide = LUTF8ToUTF16LE(text);
    out.insert(out.end(), wide.begin(), wide.end());
    if (terminated) out.insert(out.end(), {0, 0});
}

// Version 2.3 has no UTF-8: the strings of a kept UTF-8 frame become UTF-16 with a byte-order
// mark. Version 2.4 separates several values with zeros; they are joined with "/".
Bytes ToVersion3(const LID3v2Frame& frame) {
    const Bytes& data = frame.data;
    if (data.empty() || data[0] != encUTF8) return data;
    Bytes out{encUTF16};
    if (frame.id == "TXXX" || frame.id == "WXXX") {
        const auto [description, rest] = TakeUTF8(data, 1);
        AppendWide(out, description, true);
        if (frame.id == "WXXX")
            out.insert(out.end(), data.begin() + static_cast<std::ptrdiff_t>(rest), data.end());
        else
            AppendWide(out, TakeUTF8(data, rest).first, false);
        return out;
    }
    if ((frame.id == "COMM" || frame.id == "USLT") && data.size() >= 4) {
        out.insert(out.end(), data.begin() + 1, data.begin() + 4);
        const auto [description, rest] = TakeUTF8(data, 4);
        AppendWide(out, description, true);
        AppendWide(out, std::string(data.begin() + static_cast<std::ptrdiff_t>(rest), data.end()),
                   false);
        return out;
    }
    if (frame.id == "APIC") {
        const auto mimeEnd = std::find(data.begin() + 1, data.end(), 0);
        if (mimeEnd == data.end() || mimeEnd + 1 == data.end()) return data;
        out.insert(out.end(), data.begin() + 1, mimeEnd + 2); // MIME, zero, picture type
        const auto [description, rest] =
            TakeUTF8(data, static_cast<std::size_t>(mimeEnd - data.begin()) + 2);
        AppendWide(out, description, true);
        out.insert(out.end(), data.begin() + static_cast<std::ptrdiff_t>(rest), data.end());
        return out;
    }
    if (frame.id[0] == 'T') {
        std::string text(data.begin() + 1, data.end());
        while (!text.empty() && text.back() == '\0') text.pop_back();
        std::replace(text.begin(), text.end(), '\0', '/');
        AppendWide(out, text, false);
        return out;
    }
    return data;
}

bool IsJpegPicture(const LID3v2Frame& frame) {
    if (frame.id != "APIC" || frame.data.empty()) return false;
    const auto mimeEnd = std::find(frame.data.begin() + 1, frame.data.end(), 0);
    const std::string mime(frame.data.begin() + 1, mimeEnd);
    const std::size_t slash = mime.find('/');
    return slash != std::string::npos && strcasecmp(mime.c_str() + slash + 1, "jpeg") == 0;
}

// Whether a frame is one the store reads into its values (and writes back from them).
bool IsHeldByStore(const LID3v2Frame& frame) {
    if (frame.id == "TXXX") return false;
    if (frame.id[0] == 'T' || frame.id == "WXXX" || frame.id == "POPM" || frame.id == "PCNT")
        return true;
    if (frame.id == "COMM") {
        // Only a comment without a description is the user's comment.
        const Bytes& data = frame.data;
        if (data.size() < 5) return true;
        const bool wide = data[0] == encUTF16 || data[0] == encUTF16BE;
        const std::size_t at = 4 + (wide && data.size() >= 6 ? 2 : 0);
        return wide ? data.size() < at + 2 || (data[at] == 0 && data[at + 1] == 0) : data[4] == 0;
    }
    return IsJpegPicture(frame);
}

} // namespace

bool RewriteMP3Tags(const char* path, const LAudioTagData& tags, bool id3v1, bool id3v2) {
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    LFile file = OpenTagFileReadWrite(path);
    if (!file.IsOpen()) return false;
    struct stat info {};
    const int64_t size = file.GetSize();
    if (size < 0 || fstat(file.GetFd(), &info) != 0) return false;

    // The old tag, the audio after it and the old ID3v1 block.
    Bytes oldTag;
    uint8_t header[kID3v2HeaderSize];
    if (size >= static_cast<int64_t>(kID3v2HeaderSize) && ReadAt(file, 0, header, sizeof header)) {
        const int64_t body = ID3v2TagBodySize(header);
        if (body >= 0 && static_cast<int64_t>(kID3v2HeaderSize) + body <= size) {
            oldTag.resize(kID3v2HeaderSize + static_cast<std::size_t>(body));
            if (!ReadAt(file, 0, oldTag.data(), oldTag.size())) return false;
        }
    }
    uint8_t block[kBlockSize] = {};
    bool hasBlock = false;
    if (size >= static_cast<int64_t>(oldTag.size() + kBlockSize)) {
        if (!ReadAt(file, size - static_cast<int64_t>(kBlockSize), block, kBlockSize)) return false;
        hasBlock = std::memcmp(block, "TAG", 3) == 0;
        if (!hasBlock) std::memset(block, 0, sizeof block);
    }
    const int64_t audioStart = static_cast<int64_t>(oldTag.size());
    const int64_t audioEnd = size - (hasBlock ? static_cast<int64_t>(kBlockSize) : 0);

    Bytes newTag = oldTag;
    if (id3v2) {
        bool valid = false;
        std::vector<LID3v2Frame> kept;
        Bytes image;
        const bool hasImage = !tags.GetImagePath().empty() &&
                              LoadFile(tags.GetImagePath().c_str(), image, kTagFileWaitMs);
        bool samePicture = false;
        for (LID3v2Frame& frame : ReadID3v2Frames(oldTag.data(), oldTag.size(), valid)) {
            // The store's picture is the one it read from this file: the old frames stay as
            // they are and no picture is added.
            if (IsJpegPicture(frame) && hasImage && frame.data.size() >= image.size() &&
                std::equal(image.begin(), image.end(), frame.data.end() - static_cast<std::ptrdiff_t>(image.size())))
                samePicture = true;
        }
        for (LID3v2Frame& frame : ReadID3v2Frames(oldTag.data(), oldTag.size(), valid))
            if (!IsHeldByStore(frame) || (samePicture && frame.id == "APIC"))
                kept.push_back({frame.id, ToVersion3(frame)});
        newTag = StoreTagID3v2(tags, kept, !samePicture);
    }
    if (id3v1) {
        BuildID3v1Block(tags, block);
        hasBlock = true;
    }

    LAtomicFile out(path);
    if (!out.IsOpen() || !out.File().Write(newTag.data(), newTag.size())) return false;
    Bytes chunk(kCopyChunk);
    for (int64_t at = audioStart; at < audioEnd;) {
        const std::size_t count = static_cast<std::size_t>(std::min<int64_t>(audioEnd - at, kCopyChunk));
        if (!ReadAt(file, at, chunk.data(), count) || !out.File().Write(chunk.data(), count))
            return false;
        at += static_cast<int64_t>(count);
    }
    if (hasBlock && !out.File().Write(block, kBlockSize)) return false;
    // Synced first: the rename replaces the user's file.
    return out.Commit(info.st_mode & 07777, true);
}
