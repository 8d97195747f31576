#include "disc/AudioCDTrackFile.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

uint32_t BigEndian32(const uint8_t* p) {
    return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3];
}

uint16_t BigEndian16(const uint8_t* p) {
    return uint16_t(p[0] << 8 | p[1]);
}

bool ReadExact(int fd, uint64_t offset, void* out, size_t size) {
    return pread(fd, out, size, off_t(offset)) == ssize_t(size);
}

// Walks the chunks from offset 12 to the first with the id; its offset, or false.
bool FindChunk(int fd, const char* id, uint64_t& where) {
    uint64_t position = 12;
    uint8_t header[8];
    while (ReadExact(fd, position, header, sizeof header)) {
        if (std::memcmp(header, id, 4) == 0) {
            where = position;
            return true;
        }
        position += 8 + uint64_t(BigEndian32(header + 4));
    }
    return false;
}

// 0xFFFF0000 shifted right by the sample size: 0xFFFF for 16 bits, nothing left from 32 on.
uint32_t SampleMask(uint32_t sampleSize) {
    return sampleSize < 32 ? 0xFFFF0000u >> sampleSize : 0;
}

int16_t Clamp16(int value) {
    return int16_t(std::clamp(value, -32768, 32767));
}

// One sample of a big-endian frame as a 16-bit value: its upper 16 bits, masked.
int Sample(const uint8_t* frame, uint32_t index, const LAudioTrackRef& track) {
    const uint8_t* p = frame + index * track.bytesPerSample;
    const uint16_t raw = track.bytesPerSample == 1 ? uint16_t(p[0] << 8) : BigEndian16(p);
    const uint16_t mask = track.sampleSize <= 16 ? uint16_t(track.sampleMask) : 0xFFFF;
    return int16_t(raw & mask);
}

void PutFrame(uint8_t* out, int left, int right) {
    const uint16_t l = uint16_t(Clamp16(left));
    const uint16_t r = uint16_t(Clamp16(right));
    out[0] = uint8_t(l);
    out[1] = uint8_t(l >> 8);
    out[2] = uint8_t(r);
    out[3] = uint8_t(r >> 8);
}

// One input frame as a stereo output frame. Three, four and six channels are mixed down to two.
void ConvertFrame(const uint8_t* in, uint8_t* out, const LAudioTrackRef& track) {
    const auto c = [&](uint32_t i) { return Sample(in, i, track); };
    switch (track.channels) {
    case 1: PutFrame(out, c(0), c(0)); break;
    case 3: PutFrame(out, 2 * (c(0) + c(2)) / 3, 2 * (c(1) + c(2)) / 3); break;
    case 4:
        PutFrame(out, (6 * c(0) + 4 * (c(1) + c(3))) / 9, (6 * c(2) + 4 * (c(1) + c(3))) / 9);
        break;
    case 6:
        PutFrame(out, 4 * (c(0) + c(1) + c(2) + c(5)) / 9, 4 * (c(3) + c(4) + c(2) + c(5)) / 9);
        break;
    default: PutFrame(out, c(0), c(1)); break;
    }
}

int32_t PreBurn(LAudioTrackRef& track) {
    const int fd = open(track.path.substr(0, 1024).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return kProducerReadError;
    // The file is read once, front to back: keep it out of the page cache.
    posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
    posix_fadvise(fd, 0, 0, POSIX_FADV_NOREUSE);
    track.fd = fd;
    track.sampleMask = SampleMask(track.sampleSize);
    track.readPosition = track.dataStart;
    return 0;
}

int32_t Production(LAudioTrackRef& track, LTrackProductionInfo& info) {
    info.producedBytes = 0;
    if (track.fd <= 0) return kProducerReadError;
    const uint32_t frameSize = track.bytesPerSample * track.channels;
    uint32_t frames = info.requestedBytes / 4;
    // Read in pieces through a fixed buffer: an input frame may be larger than an output frame.
    uint8_t scratch[32768];
    const uint32_t piece = sizeof scratch / frameSize;
    while (frames > 0 && track.readPosition < track.dataEnd) {
        const uint32_t bytes =
            std::min(std::min(frames, piece) * frameSize, track.dataEnd - track.readPosition);
        if (pread(track.fd, scratch, bytes, track.readPosition) != ssize_t(bytes))
            return kProducerReadError;
        const uint32_t got = bytes / frameSize;
        for (uint32_t i = 0; i < got; ++i)
            ConvertFrame(scratch + i * frameSize, info.buffer + info.producedBytes + i * 4, track);
        posix_fadvise(track.fd, track.readPosition, bytes, POSIX_FADV_DONTNEED);
        info.producedBytes += got * 4;
        track.readPosition += bytes;
        frames -= got;
        if (got == 0) break;
    }
    return 0;
}

} // namespace

bool ParseAiffTrack(const std::string& path, LAudioTrackRef& track) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct Closer {
        int fd;
        ~Closer() { close(fd); }
    } closer{fd};
    struct stat info {};
    uint8_t form[12];
    if (fstat(fd, &info) != 0 || !ReadExact(fd, 0, form, sizeof form) ||
        std::memcmp(form, "FORM", 4) != 0 || std::memcmp(form + 8, "AIFF", 4) != 0)
        return false;
    uint64_t comm = 0;
    uint8_t format[8 + 18];
    if (!FindChunk(fd, "COMM", comm) || !ReadExact(fd, comm, format, sizeof format)) return false;
    const uint32_t channels = BigEndian16(format + 8);
    const uint32_t frames = BigEndian32(format + 10);
    const uint32_t sampleSize = BigEndian16(format + 14);
    const uint32_t rate = BigEndian32(format + 16);
    if (channels == 0 || channels == 5 || channels > 6) return false;
    if (rate != kAiffRate22050 && rate != kAiffRate44100) return false;
    if (sampleSize == 0 || sampleSize > 128 || frames == 0) return false;

    uint64_t ssnd = 0;
    uint8_t sound[16];
    if (!FindChunk(fd, "SSND", ssnd) || !ReadExact(fd, ssnd, sound, sizeof sound)) return false;
    const uint32_t size = BigEndian32(sound + 4);
    const uint64_t afterHeader = ssnd + 16;
    const uint64_t fileSize = uint64_t(info.st_size);
    uint64_t end = afterHeader + size - 8;
    if (size < 8 || end > fileSize) end = fileSize;
    const uint64_t start = afterHeader + BigEndian32(sound + 8);
    if (start > end || end > UINT32_MAX) return false;

    track = {};
    track.channels = channels;
    track.sampleRate = rate;
    track.sampleSize = sampleSize;
    track.bytesPerSample = (sampleSize + 7) / 8;
    track.dataStart = uint32_t(start);
    track.dataEnd = uint32_t(end);
    track.readPosition = track.dataStart;
    track.sampleMask = SampleMask(sampleSize);
    track.path = path;
    return true;
}

uint32_t TrackLengthBlocks(const LAudioTrackRef& track) {
    const uint32_t frameSize = track.bytesPerSample * track.channels;
    if (frameSize == 0) return 0;
    return uint32_t(uint64_t(track.dataEnd - track.dataStart) / frameSize * 4 / kAudioBlockBytes);
}

LAudioTrackProperties CreateAudioTrackProperties(uint32_t lengthBlocks) {
    LAudioTrackProperties properties;
    properties.trackLength = lengthBlocks;
    return properties;
}

int32_t sampleTrackProducerCallback(LAudioTrackRef& track, uint32_t message,
                                    LTrackProductionInfo* info) {
    switch (message) {
    case kProducerPreBurn: return PreBurn(track);
    case kProducerProduce: return info ? Production(track, *info) : kProducerBadMessage;
    case kProducerPostBurn: trackRefConDestructor(track); return 0;
    default: return kProducerBadMessage;
    }
}

void trackRefConDestructor(LAudioTrackRef& track) {
    if (track.fd > 0) close(track.fd);
    track.fd = 0;
}

LServiceAudioTrack::LServiceAudioTrack(LAudioTrackProperties properties, LAudioTrackRef track)
    : properties_(std::move(properties)), track_(std::move(track)) {}

LServiceAudioTrack::~LServiceAudioTrack() {
    trackRefConDestructor(track_);
}

int32_t LServiceAudioTrack::PreBurn() {
    return sampleTrackProducerCallback(track_, kProducerPreBurn, nullptr);
}

int32_t LServiceAudioTrack::Produce(uint8_t* out, uint32_t bytes, uint32_t& produced) {
    LTrackProductionInfo info{out, bytes, 0};
    const int32_t result = sampleTrackProducerCallback(track_, kProducerProduce, &info);
    produced = info.producedBytes;
    return result;
}

void LServiceAudioTrack::PostBurn() {
    sampleTrackProducerCallback(track_, kProducerPostBurn, nullptr);
}

std::optional<LServiceTrackArray> CreateTracks(std::string folder) {
    namespace fs = std::filesystem;
    if (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    std::error_code failure;
    if (!fs::is_directory(folder, failure)) return std::nullopt;
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, failure)) {
        const std::string name = entry.path().filename().string();
        std::string extension = entry.path().extension().string();
        std::transform(extension.begin(), extension.end(), extension.begin(), ::tolower);
        if (name.starts_with("._") || (extension != ".aiff" && extension != ".aif")) continue;
        names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    LServiceTrackArray tracks;
    for (const std::string& name : names) {
        LAudioTrackRef track;
        const std::string path = folder + "/" + name;
        if (!ParseAiffTrack(path, track)) continue;
        LAudioTrackProperties properties = CreateAudioTrackProperties(TrackLengthBlocks(track));
        properties.sourceFilePath = path;
        tracks.push_back(std::make_unique<LServiceAudioTrack>(std::move(properties), std::move(track)));
    }
    return tracks;
}
