#pragma once

#include "jobs/Thread.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

// Reads a list of files ahead of the one who writes them out, on a thread of its own, into a
// ring of buffers: while the drive takes one buffer the next ones are read, the way a burner's
// FIFO keeps a drive fed. Memory is the ring and nothing more. Each file is read up to its
// expected size; a file that cannot be opened or read, or is shorter, ends early and says so.
// Destroying the object stops the reader and closes every file it opened.
class LFileReadAhead : private LThread {
public:
    struct Source {
        std::string path;
        uint64_t size = 0;
    };
    // A part of a file's bytes in the order they are in the file. The last piece of a file
    // (perhaps with no bytes) says whether all of its expected bytes were read.
    struct Piece {
        size_t source = 0;
        const uint8_t* data = nullptr;
        size_t size = 0;
        bool last = false;
        bool complete = false;
    };

    LFileReadAhead(std::vector<Source> sources, size_t bufferBytes, size_t buffers);
    ~LFileReadAhead() override;

    // Hands back the piece taken before and waits for the next one: its data stays valid until
    // the next call. False once the last piece of the last file has been taken.
    bool Next(Piece& piece);

protected:
    void ThreadFunction() override;

private:
    struct Slot {
        std::vector<uint8_t> bytes;
        Piece piece;
    };

    // Reads one file into the ring; false when the reader is to end.
    bool ReadSource(size_t index);
    // Waits for a free slot; null when the reader is to end.
    Slot* FreeSlot();
    void Publish();

    std::vector<Source> sources_;
    std::vector<Slot> ring_;
    std::mutex mutex_;
    std::condition_variable changed_;
    size_t filled_ = 0;    // slots read and not yet handed back
    size_t readNext_ = 0;  // the slot the reader fills next
    size_t takeNext_ = 0;  // the slot the writer takes next
    bool holding_ = false; // the writer holds the slot before takeNext_
    bool closing_ = false;
    bool ended_ = false; // the writer has taken the last piece
};
