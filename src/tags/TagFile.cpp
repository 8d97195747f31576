#include "tags/TagFile.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

bool IsRegularFile(const char* path) {
    struct stat info;
    return stat(path, &info) == 0 && S_ISREG(info.st_mode);
}

} // namespace

LFile OpenTagFileReadWrite(const char* path) {
    if (!IsRegularFile(path)) return LFile();
    return LFile(_OpenReadWrite(path, kTagFileWaitMs));
}

LFile OpenTagFileRead(const char* path) {
    if (!IsRegularFile(path)) return LFile();
    return LFile(_OpenRead(path, kTagFileWaitMs));
}

bool ReadAt(LFile& file, int64_t offset, void* data, std::size_t size) {
    if (offset < 0 || file.Seek(offset) != offset) return false;
    return file.Read(data, size) == static_cast<ssize_t>(size);
}

bool WriteAt(LFile& file, int64_t offset, const void* data, std::size_t size) {
    if (offset < 0 || file.Seek(offset) != offset) return false;
    return file.Write(data, size);
}

bool Truncate(LFile& file, int64_t size) {
    return ftruncate(file.GetFd(), size) == 0;
}
