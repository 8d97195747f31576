#pragma once

struct MP3GranuleInfo;

// The mixed-block flag makes the lowest subbands (this many) long blocks with the normal
// window, whatever the block type.
int GetMixedSubbands(const MP3GranuleInfo& info, int shortBlockStart);

// Alias-reduction butterflies between neighbouring long-block subbands of a granule (spectrum
// in IMDCT order). subbands is the number of subbands that may hold data; the butterflies can
// spread it into one more, which the result reports.
int AliasReduction(float* xr, const MP3GranuleInfo& info, int mixedSubbands, int subbands);

// Inverse MDCT, windowing and overlap-add of one granule and channel. overlap keeps the
// second half of the last granule's blocks (32 x 18 values); out receives 18 time slots of 32
// subband samples each (out[slot * 32 + subband]), with the odd subbands' frequency
// inversion applied. Subbands from `subbands` on are taken as silent.
void IMDCTSynthesize(const float* xr, const MP3GranuleInfo& info, int mixedSubbands, int subbands,
                     float* overlap, float* out);
