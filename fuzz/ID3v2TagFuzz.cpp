// Feeds arbitrary bytes to the ID3v2 tag parser, then to the MP3 tag readers and writers as a
// file. Writing changes only the in-memory copy.
#include "FuzzFile.h"

#include "tags/AudioTagData.h"
#include "tags/ID3v2.h"

#include <iconv.h>

// The tag code opens and closes an iconv converter for every text it reads; one kept open for
// the whole run keeps glibc from loading and unloading the converter module for every input.
const iconv_t keptConverter = iconv_open("UTF-8", "ISO-8859-1");

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    LAudioTagData parsed;
    ParseTagID3v2(data, size, parsed);
    StoreTagID3v2(parsed);

    const std::string file = FuzzFilePath(data, size);
    if (file.empty())
        return 0;
    const char* path = file.c_str();

    LAudioTagData tags;
    tags.ReadTagsMP3(path);
    tags.SetImagePath("");
    tags.SetTag("TITLE", "Fuzzed", true);
    tags.WriteTagsMP3(path);
    LAudioTagData again;
    again.ReadTagsMP3(path);
    return 0;
}
