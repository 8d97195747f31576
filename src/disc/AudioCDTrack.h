#pragma once

#include "sound/SoundSource.h"

#include <string>

// One track of an audio CD: its audio and the texts shown for it.
class LAudioCDTrack {
public:
    // Texts are cut to 259 bytes; a null text stays empty.
    LAudioCDTrack(const LSoundSource& source, const char* path, const char* title,
                  const char* performer, const char* text3);
    virtual ~LAudioCDTrack() = default;

    static constexpr size_t kTextBytes = 259;

    LSoundSource source;
    std::string path;
    std::string title;
    // CD-TEXT performer; empty when not known.
    std::string performer;
    std::string text3;
};
