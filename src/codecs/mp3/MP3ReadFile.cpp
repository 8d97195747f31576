#include "codecs/mp3/MP3ReadFile.h"

#include "codecs/WaveFileIO.h"

#include <algorithm>
#include <cstring>
#include <sys/stat.h>

bool MP3ReadFile::Open(const char* path) {
    file_ = LFile(_OpenRead(path, 0));
    struct stat info;
    if (!file_.IsOpen() || fstat(file_.GetFd(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
    fileSize_ = info.st_size;
    audioLength_ = fileSize_;
    startOffset_ = 0;
    std::uint8_t head[10];
    if (ReadFileAt(file_, 0, head, 10) == 10 && std::memcmp(head, "ID3", 3) == 0) {
        const std::int64_t size = (head[6] << 21) + (head[7] << 14) + (head[8] << 7) + head[9];
        startOffset_ = size + 10;
        audioLength_ = fileSize_ - size - 10;
    }
    std::uint8_t tail[3];
    if (fileSize_ >= 128 && ReadFileAt(file_, fileSize_ - 128, tail, 3) == 3 &&
        std::memcmp(tail, "TAG", 3) == 0)
        audioLength_ -= 128;
    audioLength_ = std::max<std::int64_t>(audioLength_, 0);
    SeekTo(startOffset_);
    return true;
}

int MP3ReadFile::Read(void* destination, int n) {
    auto* out = static_cast<std::uint8_t*>(destination);
    n = static_cast<int>(std::clamp<std::int64_t>(GetBytesRemaining(), 0, n));
    int done = 0;
    while (done < n) {
        if (bufferPosition_ == bufferFill_ && !Fill()) break;
        const int chunk = std::min(n - done, bufferFill_ - bufferPosition_);
        std::memcpy(out + done, buffer_.data() + bufferPosition_, chunk);
        bufferPosition_ += chunk;
        done += chunk;
    }
    return done;
}

void MP3ReadFile::SeekTo(std::int64_t offset) {
    offset = std::clamp(offset, startOffset_, std::max(GetAudioEnd(), startOffset_));
    if (offset >= bufferOffset_ && offset <= bufferOffset_ + bufferFill_) {
        bufferPosition_ = static_cast<int>(offset - bufferOffset_);
        return;
    }
    bufferOffset_ = offset;
    bufferPosition_ = 0;
    bufferFill_ = 0;
}

bool MP3ReadFile::Fill() {
    bufferOffset_ += bufferFill_;
    bufferPosition_ = 0;
    bufferFill_ = 0;
    const std::int64_t want = std::min<std::int64_t>(buffer_.size(), GetAudioEnd() - bufferOffset_);
    if (!file_.IsOpen() || want <= 0) return false;
    bufferFill_ = static_cast<int>(ReadFileAt(file_, bufferOffset_, buffer_.data(), want, failed_));
    return bufferFill_ > 0;
}
