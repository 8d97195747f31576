// Feeds arbitrary bytes to the wave tag readers (LIST INFO and DISP, bext, cart) and writers:
// the RIFF chunk walk, filler reuse and appending. The bytes live in an anonymous memory
// file, opened by its /proc path like any file on disk; writing changes only that copy.
#include "tags/AudioTagData.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int fd = memfd_create("wave-tags-fuzz", 0);
    if (fd < 0 || ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
        return 0;
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", fd);

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
