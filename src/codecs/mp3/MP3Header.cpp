#include "codecs/mp3/MP3Header.h"

#include "codecs/mp3/MP3ReadFile.h"

#include <cstring>

const int MP3Header::VersionTable[4] = {2, 3, 1, 0};
const int MP3Header::SampleRateTable[3] = {44100, 48000, 32000};
const int MP3Header::BitRateTable[32] = {
    0,      32000,  40000,  48000,  56000, 64000,  80000,  96000,  112000, 128000, 160000,
    192000, 224000, 256000, 320000, 0,     0,      8000,   16000,  24000,  32000,  40000,
    48000,  56000,  64000,  80000,  96000, 112000, 128000, 144000, 160000, 0,
};

bool MP3Header::Parse(const std::uint8_t* bytes) {
    if (bytes[0] != 255 || bytes[1] < 224 || ((bytes[1] >> 1) & 3) != 1) return false;
    const int newVersion = VersionTable[(bytes[1] >> 3) & 3];
    if (newVersion == 3) return false;
    const int rate = BitRateTable[(bytes[2] >> 4) + (newVersion != 0 ? 16 : 0)];
    const int rateIndex = (bytes[2] >> 2) & 3;
    if (rate == 0 || rateIndex >= 3) return false;
    version = newVersion;
    protectionAbsent = bytes[1] & 1;
    bitRate = rate;
    sampleRateIndex = rateIndex;
    padding = (bytes[2] >> 1) & 1;
    mode = bytes[3] >> 6;
    modeExtension = (bytes[3] >> 4) & 3;
    return true;
}

bool MP3Header::ReadHeader(MP3ReadFile& file) {
    constexpr int kMaxSteps = 65535;
    std::uint8_t bytes[4];
    if (file.Read(bytes, 4) != 4) return false;
    for (int step = 0;; ++step) {
        if (bytes[0] == 'I' && bytes[1] == 'D' && bytes[2] == '3') {
            // A tag inside the stream: skip it when its header is sound.
            std::uint8_t tag[6];
            const int got = file.Read(tag, 6);
            if (got == 6 && tag[0] < 255 && tag[1] < 255 && tag[2] < 128 && tag[3] < 128 &&
                tag[4] < 128 && tag[5] < 128) {
                file.Skip((tag[2] << 21) + (tag[3] << 14) + (tag[4] << 7) + tag[5]);
                if (file.Read(bytes, 4) != 4) return false;
                continue;
            }
            file.Skip(-got);
        }
        if (Parse(bytes)) {
            if (!protectionAbsent) file.Skip(2);
            return true;
        }
        if (step >= kMaxSteps) return false;
        std::memmove(bytes, bytes + 1, 3);
        if (file.Read(bytes + 3, 1) != 1) return false;
    }
}

int MP3Header::GetFrameLength() const {
    return (version != 0 ? 72 : 144) * bitRate / GetSampleRate() + padding;
}

int MP3Header::GetSideInfoLength() const {
    if (version == 0) return mode == 3 ? 17 : 32;
    return mode == 3 ? 9 : 17;
}

int MP3Header::GetMainDataLength() const {
    return GetFrameLength() - (protectionAbsent ? 4 : 6) - GetSideInfoLength();
}

bool MP3Header::Matches(const MP3Header& reference) const {
    return version == reference.version && sampleRateIndex == reference.sampleRateIndex &&
           (mode == 3) == (reference.mode == 3);
}
