#pragma once

#include "jobs/ProcessInterface.h"

#include <string>
#include <vector>

// Gluing files one after the other into one CD-format file (16-bit, stereo, 44,100 Hz), each
// input normalised to 80 % of full scale, written into `outputFolder` under a name made of the
// inputs' names: "name1_name2_JOINED.wav", or ".mp3" when the first input is an MP3 file.
struct LJoinFiles {
    std::vector<std::string> paths;
    std::string outputFolder;
    // Filled by the job: the file produced.
    std::string output;
};

// Joins the files; a stop ends the job as failed and leaves the partial file. An MP3 result
// is encoded from an intermediate wave file, which is removed once the MP3 file is written.
LProcessResult Process(LProcessInterface& progress, LJoinFiles& job);

// "name1_name2_JOINED": each input's file name without extension, cut to 40 characters.
std::string JoinedName(const std::vector<std::string>& paths);
