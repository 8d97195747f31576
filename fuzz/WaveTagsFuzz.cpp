// Feeds arbitrary bytes to the wave tag readers (LIST INFO and DISP, bext, cart) and writers:
// the RIFF chunk walk, filler reuse and appending. Writing changes only the in-memory copy.
#include "FuzzFile.h"

#include "tags/AudioTagData.h"

#include <iconv.h>

// The tag code opens and closes an iconv converter for every text it reads; one kept open for
// the whole run keeps glibc from loading and unloading the converter module for every input.
const iconv_t keptConverter = iconv_open("UTF-8", "ISO-8859-1");

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
