#include "restore/KeptPass.h"

#include "platform/UserFolders.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// An unnamed file in the temporary recording folder; gone when closed.
int OpenUnnamedFile() {
    const int fd = open(kTemporaryRecordingFolder, O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (fd >= 0 || (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)) return fd;
    // A file system without unnamed files: a named one, removed at once.
    std::string path = std::string(kTemporaryRecordingFolder) + "vinora-pass-XXXXXX";
    const int named = mkostemp(path.data(), O_CLOEXEC);
    if (named >= 0) unlink(path.c_str());
    return named;
}

bool WriteAll(int fd, const void* data, size_t bytes) {
    const char* next = static_cast<const char*>(data);
    while (bytes > 0) {
        const ssize_t written = write(fd, next, bytes);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        next += written;
        bytes -= static_cast<size_t>(written);
    }
    return true;
}

bool ReadAllAt(int fd, void* data, size_t bytes, off_t at) {
    char* next = static_cast<char*>(data);
    while (bytes > 0) {
        const ssize_t got = pread(fd, next, bytes, at);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        next += got;
        bytes -= static_cast<size_t>(got);
        at += got;
    }
    return true;
}

} // namespace

LSRCKeptPass::LSRCKeptPass(LSoundSource& source, int memoryFrames)
    : LSoundProcessBase(source), memoryFrames_(std::max(memoryFrames, 0)),
      end_(source->GetEndSample()) {
    memory_.reserve(static_cast<size_t>(memoryFrames_) * channels_);
}

LSRCKeptPass::~LSRCKeptPass() {
    if (fd_ >= 0) close(fd_);
}

bool LSRCKeptPass::Keep(int* buffer, int frames) {
    inner_->Read(buffer, frames);
    sourcePosition_ += frames;
    const int inMemory = std::clamp(memoryFrames_ - kept_, 0, frames);
    memory_.insert(memory_.end(), buffer, buffer + static_cast<size_t>(inMemory) * channels_);
    const int toFile = frames - inMemory;
    if (toFile > 0) {
        if (fd_ < 0) fd_ = OpenUnnamedFile();
        if (fd_ < 0 || !WriteAll(fd_, buffer + static_cast<size_t>(inMemory) * channels_,
                                 static_cast<size_t>(toFile) * channels_ * sizeof(int)))
            return false;
    }
    kept_ += frames;
    return true;
}

void LSRCKeptPass::Replay() {
    // A file source that turned out shorter than its header said knows its end by now.
    end_ = inner_->GetEndSample();
    position_ = 0;
}

void LSRCKeptPass::ReadKept(int* buffer, int from, int frames) {
    const int inMemory = std::clamp(memoryFrames_ - from, 0, frames);
    if (inMemory > 0)
        std::memcpy(buffer, memory_.data() + static_cast<size_t>(from) * channels_,
                    static_cast<size_t>(inMemory) * channels_ * sizeof(int));
    const int fromFile = frames - inMemory;
    if (fromFile <= 0) return;
    const off_t at = static_cast<off_t>(from + inMemory - memoryFrames_) * channels_ * sizeof(int);
    int* out = buffer + static_cast<size_t>(inMemory) * channels_;
    const size_t bytes = static_cast<size_t>(fromFile) * channels_ * sizeof(int);
    if (!ReadAllAt(fd_, out, bytes, at)) {
        std::memset(out, 0, bytes);
        readFailed_ = true;
    }
}

uint8_t LSRCKeptPass::GetError() const {
    if (readFailed_) return sndErrRead;
    return LSoundProcessBase::GetError();
}

void LSRCKeptPass::Read(int* buffer, int frames) {
    while (frames > 0) {
        int count;
        if (position_ >= 0 && position_ < kept_) {
            count = std::min(frames, kept_ - position_);
            ReadKept(buffer, position_, count);
        } else {
            count = frames;
            if (position_ < 0) count = std::min(frames, -position_);
            if (sourcePosition_ != position_) inner_->Seek(position_);
            inner_->Read(buffer, count);
            sourcePosition_ = position_ + count;
        }
        position_ += count;
        buffer += static_cast<size_t>(count) * channels_;
        frames -= count;
    }
}
