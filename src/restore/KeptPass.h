#pragma once

#include "sound/SoundSource.h"

#include <atomic>
#include <vector>

// A source read once and kept, so that a second pass over it costs a copy instead of running
// its stages again. The first frames are kept in memory (at most `memoryFrames`), the rest in
// an unnamed temporary file, so memory stays bounded whatever the length.
//
// The stage reads its source itself while keeping: Keep reads the next frames and keeps them.
// Once keeping is finished the stage replays: frames that were kept come from memory or the
// file, later ones from the source, which is then just past the kept frames and goes on as if
// it had never been interrupted (a filter's tail past the end is the same). Kept frames that
// cannot be read back from the file read as silence, and the stage has the error sndErrRead
// from then on.
class LSRCKeptPass : public LSoundProcessBase {
public:
    // The source is at its start.
    LSRCKeptPass(LSoundSource& source, int memoryFrames);
    ~LSRCKeptPass() override;

    // Reads the next `frames` of the source into `buffer` and keeps them; false when they could
    // not be kept (no room for the file), after which the stage cannot replay.
    bool Keep(int* buffer, int frames);
    // Ends keeping; the stage replays from frame 0.
    void Replay();

    void Read(int* buffer, int frames) override;
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return end_; }
    void Seek(int frame) override { position_ = frame; }
    uint8_t GetError() const override;

private:
    // Copies kept frames [from, from + frames) into `buffer`.
    void ReadKept(int* buffer, int from, int frames);

    std::vector<int> memory_; // the first kept frames
    int memoryFrames_;        // how many fit in memory
    int fd_ = -1;             // the file with the frames after them
    int kept_ = 0;            // frames kept
    int position_ = 0;
    int end_ = 0;
    int sourcePosition_ = 0; // where the source is, counted from the first kept frame
    // A read of the file failed; atomic, because a reader above may ask from another thread.
    std::atomic<bool> readFailed_ = false;
};
