#include "sound/ReadAhead.h"

#include <algorithm>
#include <system_error>

LSRCReadAhead::LSRCReadAhead(LSoundSource& source)
    : LSoundProcessBase(source), position_(source->GetPositionSample()),
      end_(source->GetEndSample()), block_(static_cast<size_t>(kBlockFrames) * channels_),
      ring_(static_cast<unsigned long>(kBlocks) * block_.size() * sizeof(int)) {
}

LSRCReadAhead::~LSRCReadAhead() {
    StopFilling();
}

void LSRCReadAhead::Fill() {
    const unsigned long bytes = block_.size() * sizeof(int);
    while (!stop_) {
        inner_->Read(block_.data(), kBlockFrames);
        while (!stop_ && ring_.GetBytesWriteAvailable() < bytes)
            ring_.SpaceAvailable().WaitSignal(WAIT_FOREVER);
        if (stop_) return;
        ring_.Write(block_.data(), bytes);
    }
}

void LSRCReadAhead::StopFilling() {
    if (!filling_) return;
    stop_ = true;
    ring_.SpaceAvailable().Signal();
    filler_.join();
    filling_ = false;
    stop_ = false;
    const unsigned long blockBytes = block_.size() * sizeof(int);
    for (unsigned long left; (left = ring_.GetBytesReadAvailable()) > 0;)
        ring_.Read(block_.data(), std::min(left, blockBytes));
}

void LSRCReadAhead::Read(int* buffer, int frames) {
    if (!filling_ && !direct_) {
        try {
            filler_ = std::thread([this] { Fill(); });
            filling_ = true;
        } catch (const std::system_error&) {
            // No thread to be had: the source is read on the reader's thread.
            direct_ = true;
        }
    }
    if (direct_) {
        inner_->Read(buffer, frames);
        position_ += frames;
        return;
    }
    unsigned char* out = reinterpret_cast<unsigned char*>(buffer);
    for (unsigned long wanted = static_cast<unsigned long>(frames) * channels_ * sizeof(int);
         wanted > 0;) {
        const unsigned long ready = ring_.GetBytesReadAvailable();
        if (ready == 0) {
            ring_.DataAvailable().WaitSignal(WAIT_FOREVER);
            continue;
        }
        const unsigned long bytes = std::min(ready, wanted);
        ring_.Read(out, bytes);
        out += bytes;
        wanted -= bytes;
    }
    position_ += frames;
}

void LSRCReadAhead::Seek(int frame) {
    StopFilling();
    inner_->Seek(frame);
    position_ = inner_->GetPositionSample();
}

LSoundSource LSPReadAhead::OpenSource(LSoundSource& source) {
    if (source->GetError() != sndErrNone || source->IsStreaming()) return source;
    return LSoundSource(new LSRCReadAhead(source));
}
