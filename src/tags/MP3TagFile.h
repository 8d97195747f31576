#pragma once

#include <cstdint>

class LAudioTagData;

// The ID3v1 block for the store, built over `block`'s 128 bytes (the old block, or zeros).
void BuildID3v1Block(const LAudioTagData& tags, uint8_t* block);

// Rewrites an MP3 file's ID3v1 block, its ID3v2 tag or both from the store, whole or not at
// all: the new file is made beside the old one and replaces it in one step, so a full disk or
// a crash leaves the old file byte for byte. The frames of the old ID3v2 tag (versions 2.2 to
// 2.4) that the store does not hold (user texts, pictures it does not read, private frames) are
// carried into the new version 2.3 tag. False when the file cannot be read or the new one not
// be written.
bool RewriteMP3Tags(const char* path, const LAudioTagData& tags, bool id3v1, bool id3v2);
