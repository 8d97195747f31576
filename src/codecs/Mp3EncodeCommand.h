#pragma once

#include "codecs/Mp3EncodeSettings.h"

#include <cstddef>

// The command line that runs the MP3 encoder (the component "mp3el", a LAME command-line
// encoder) on raw 16-bit samples from its standard input:
//   "<encoder>"[ -a] -m <s|j|f|m>[ -p] <bit rates> -r -x -s <kHz> -S - "<output>"
// with "-b <kbps>[ -h]" for CBR and "-v -b <min> -B <max> -V <quality>" for VBR. The samples
// are piped in big-endian: LAME reads raw input as little-endian, and "-x" swaps the bytes.

// Size of the buffer the command line is written into, terminator included.
inline constexpr std::size_t kMp3CommandLineSize = 860;

// Writes the command line into `out` and hands back the rate and channel count the piped
// samples must have: the rate from LMp3CorrectSampleRate, the source's channels (at most 2),
// or 1 when the lowest bit rate is 23 kbps or less. False when the encoder cannot be found, or
// when a path does not fit the command line whole.
bool Mp3CreateEncoderCommandLine(char* out, int& sinkRate, unsigned char& sinkChannels,
                                 const char* outputPath, const LMp3EncodeSettings& settings,
                                 int rate, unsigned char channels);
