#include "disc/FileReadAhead.h"

#include "platform/File.h"

#include <algorithm>
#include <fcntl.h>

LFileReadAhead::LFileReadAhead(std::vector<Source> sources, size_t bufferBytes, size_t buffers)
    : sources_(std::move(sources)), ring_(std::max<size_t>(buffers, 1)) {
    for (Slot& slot : ring_) slot.bytes.resize(std::max<size_t>(bufferBytes, 1));
    if (!sources_.empty()) StartSame();
}

LFileReadAhead::~LFileReadAhead() {
    {
        std::lock_guard lock(mutex_);
        closing_ = true;
    }
    changed_.notify_all();
    StopThreadNow();
}

bool LFileReadAhead::Next(Piece& piece) {
    std::unique_lock lock(mutex_);
    if (holding_) {
        holding_ = false;
        --filled_;
        changed_.notify_all();
    }
    if (ended_ || sources_.empty()) return false;
    changed_.wait(lock, [this] { return filled_ > 0; });
    const Slot& slot = ring_[takeNext_];
    takeNext_ = (takeNext_ + 1) % ring_.size();
    holding_ = true;
    piece = slot.piece;
    ended_ = piece.last && piece.source + 1 == sources_.size();
    return true;
}

void LFileReadAhead::ThreadFunction() {
    for (size_t index = 0; index < sources_.size(); ++index)
        if (!ReadSource(index)) return;
}

bool LFileReadAhead::ReadSource(size_t index) {
    const Source& source = sources_[index];
    LFile file(_OpenRead(source.path.c_str(), 0));
    if (file.IsOpen()) posix_fadvise(file.GetFd(), 0, 0, POSIX_FADV_SEQUENTIAL);
    uint64_t done = 0;
    for (;;) {
        Slot* slot = FreeSlot();
        if (!slot) return false;
        const size_t want =
            static_cast<size_t>(std::min<uint64_t>(slot->bytes.size(), source.size - done));
        const ssize_t got = file.IsOpen() && want > 0 ? file.Read(slot->bytes.data(), want) : 0;
        const size_t size = got > 0 ? static_cast<size_t>(got) : 0;
        done += size;
        const bool complete = file.IsOpen() && got >= 0 && done >= source.size;
        const bool last = complete || size < want || size == 0;
        slot->piece = {index, slot->bytes.data(), size, last, complete};
        Publish();
        if (last) return true;
    }
}

LFileReadAhead::Slot* LFileReadAhead::FreeSlot() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return closing_ || filled_ < ring_.size(); });
    if (closing_) return nullptr;
    return &ring_[readNext_];
}

void LFileReadAhead::Publish() {
    {
        std::lock_guard lock(mutex_);
        readNext_ = (readNext_ + 1) % ring_.size();
        ++filled_;
    }
    changed_.notify_all();
}
