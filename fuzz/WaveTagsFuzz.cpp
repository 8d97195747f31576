// Feeds arbitrary bytes to the wave tag readers (LIST INFO and DISP, bext, cart) and writers:
// the RIFF chunk walk, filler reuse and appending. Writing changes only the in-memory copy.
#include "FuzzFile.h"

#include "tags/AudioTagData.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string file = FuzzFilePath(data, size);
    if (file.empty())
        return 0;
    const char* path = file.c_str();

    LAudioTagData tags;
    tags.ReadTagsCART(path);
    tags.ReadTagsBWF(path);
    tags.ReadTagsWAV(path, true);
    tags.SetTag("TITLE", "Fuzzed", true);
    tags.WriteTagsWav(path);
    tags.WriteTagsBWF(path, true);
    tags.WriteTagsCART(path);
    LAudioTagData again;
    again.ReadTagsWAV(path, false);
    again.ReadTagsBWF(path);
    return 0;
}
