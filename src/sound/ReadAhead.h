#pragma once

#include "sound/Bucket.h"
#include "sound/SoundSource.h"

#include <atomic>
#include <thread>
#include <vector>

// Reads its source on a thread of its own, up to a few blocks ahead of the reader, so that the
// stages below it and the stages above it run on two processors at once. The source below is
// then used by that thread alone: the reader's thread seeks it only while the thread is
// stopped. The thread starts at the first read after a seek; it reads past the source's end as
// the reader does, because a stage's output goes on there (a filter's tail).
class LSRCReadAhead : public LSoundProcessBase {
public:
    explicit LSRCReadAhead(LSoundSource& source);
    ~LSRCReadAhead() override;

    void Read(int* buffer, int frames) override;
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return end_; }
    void Seek(int frame) override;
    // Streaming sources are not read ahead.
    bool IsStreaming() const override { return false; }

private:
    static constexpr int kBlockFrames = 8192;
    static constexpr int kBlocks = 8;

    // The thread: reads the source into the ring until it is stopped.
    void Fill();
    // Stops the thread and empties the ring.
    void StopFilling();

    int position_;
    int end_; // the source's, when the stage was made
    bool filling_ = false; // the thread was started and not stopped since
    bool direct_ = false;  // no thread could be started: reads go straight to the source
    std::vector<int> block_; // the thread's block; the ring is emptied through it when stopped
    LBucket ring_;
    std::atomic<bool> stop_ = false;
    std::thread filler_;
};

// Opens a read-ahead stage; a streaming source, or one with an error, is handed back as it is.
class LSPReadAhead : public LSoundProcess {
public:
    LSoundSource OpenSource(LSoundSource& source) override;
};
