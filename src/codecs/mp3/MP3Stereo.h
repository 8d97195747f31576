#pragma once

struct MP3BandTable;
struct MP3GranuleInfo;
struct MP3Header;
struct MP3ScaleFactors;

// Joint stereo of one granule, on spectra in bitstream order: mid/side and intensity stereo as
// the mode extension of the header says. right is the right channel's granule information and
// scale factors (which carry the intensity positions); count holds, per channel, the number of
// lines up to the last nonzero one, and is updated.
void JointStereoProcessing(const MP3Header& header, const MP3GranuleInfo& right,
                           const MP3ScaleFactors& rightFactors, const MP3BandTable& bands,
                           float* left, float* rightSpectrum, int* count);
