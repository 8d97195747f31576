#pragma once

#include "jobs/UserInteraction.h"
#include "sound/SoundSink.h"
#include "sound/SoundSource.h"

#include <vector>

// The audio files the program reads and writes, by extension: how each is opened as a source
// and written as a sink, which tags it carries, and how a file chooser names it. Every decision
// made from a file name goes through here.

enum class LAudioTagKind { id3, riff };
// How a file name's extension is compared: without regard to case (the rule for file names),
// or exactly where a name must match as written.
enum class LNameMatch { anyCase, exact };

struct LAudioFileType {
    const char* extension; // with its dot
    const char* filterName;
    LAudioTagKind tags;
    LSoundSource (*openSource)(const char* path);
    // A sink for audio of `rate` and `channels`; with `savedFormat` a wave file takes the user's
    // output format, else 16-bit PCM at the given rate and channels (an MP3 file always takes
    // the user's encoder settings).
    LSoundSink (*openSink)(const char* path, int rate, unsigned char channels, bool savedFormat);
};

// The type of the file, by its extension; nullptr for a file the program does not handle.
const LAudioFileType* LFindAudioFileType(const char* path,
                                         LNameMatch match = LNameMatch::anyCase);
// Every type, wave first.
const std::vector<LAudioFileType>& LAudioFileTypes();
// The file chooser's filter of all audio files ("Audio Files", "*.wav *.mp3").
LFileFilter LAudioFilesFilter();
