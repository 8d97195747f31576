#include "disc/AudioCDTrack.h"

#include "disc/BurnFile.h"

namespace {

std::string Text(const char* text) {
    return text ? CutUTF8(text, LAudioCDTrack::kTextBytes) : std::string();
}

} // namespace

LAudioCDTrack::LAudioCDTrack(const LSoundSource& source, const char* path, const char* title,
                             const char* performer, const char* text3)
    : source(source), path(Text(path)), title(Text(title)), performer(Text(performer)),
      text3(Text(text3)) {}
