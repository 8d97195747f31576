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

// Joins the files. The joined audio is written into a hidden temporary wave file (encoded from
// there into a hidden temporary MP3 file when the first input is MP3) and the result takes the
// first free name, "name1_name2_JOINED.wav", else "name1_name2_JOINED (01).wav"..., so no file
// that exists is ever replaced. A stop ends the job as failed; a stop or a failure leaves none
// of its files. When the MP3 encoding fails the joined wave file is kept as the result.
LProcessResult Process(LProcessInterface& progress, LJoinFiles& job);

// "name1_name2_JOINED": each input's file name without extension, cut to 40 characters.
std::string JoinedName(const std::vector<std::string>& paths);
