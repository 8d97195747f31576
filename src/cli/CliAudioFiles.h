#pragma once

#include "sound/SoundSource.h"

#include <cstdint>
#include <string>

// Opens an audio file the program reads as a source: an MP3 file by its extension ".mp3",
// anything else as a wave file.
LSoundSource CliOpenAudioSource(const std::string& path);
bool CliIsMP3File(const std::string& path);

// Whether the file name ends in the extension (given with its dot), without regard to case.
bool CliHasExtension(const std::string& path, const char* extension);

// What a source's error code means, for messages.
const char* CliSoundErrorText(uint8_t error);
