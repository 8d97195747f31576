// Feeds arbitrary bytes to the ID3v2 tag parser, then to the MP3 tag readers and writers as a
// file. The bytes live in an anonymous memory file, opened by its /proc path like any file on
// disk; writing changes only that copy.
#include "tags/AudioTagData.h"
#include "tags/ID3v2.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    LAudioTagData parsed;
    ParseTagID3v2(data, size, parsed);
    StoreTagID3v2(parsed);

    static const int fd = memfd_create("id3-fuzz", 0);
    if (fd < 0 || ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
        return 0;
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", fd);

    LAudioTagData tags;
    tags.ReadTagsMP3(path);
    tags.SetImagePath("");
    tags.SetTag("TITLE", "Fuzzed", true);
    tags.WriteTagsMP3(path);
    LAudioTagData again;
    again.ReadTagsMP3(path);
    return 0;
}
