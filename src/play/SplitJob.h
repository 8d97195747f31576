#pragma once

#include "jobs/ProcessInterface.h"

#include <string>
#include <vector>

// Cutting a wave or MP3 file into consecutive pieces at frame positions (of the file's own
// rate, ascending): n positions give the pieces [0, p0), [p0, p1), ... [pn-1, end), written next
// to the file in its format and carrying its tags, the title numbered by piece.
struct LSplitFileProcessData {
    const char* path = nullptr;
    const std::vector<int>& positions;
    // Filled by the job: the pieces written, in order.
    std::vector<std::string> pieces;
};

// Splits the file. Each piece is written under a hidden temporary name and takes the first free
// piece name when complete, so no file that exists is ever replaced. A piece of length 0 is
// skipped (its index is used up); a position before the one before it ends the split early, as
// done; a file that ends before its header says ends its piece there (logged) and the split
// with it. A stop or a failure deletes every piece this job wrote.
LProcessResult Process(LProcessInterface& progress, LSplitFileProcessData& job);

// The name of piece `index` of `path` with collision counter `counter`: "song_SPLIT_00.wav"
// for counter 0, else "song (01)_SPLIT_00.wav", "song (02)_SPLIT_00.wav"...
std::string SplitPieceName(const std::string& path, int index, int counter);
