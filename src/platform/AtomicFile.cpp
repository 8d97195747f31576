#include "platform/AtomicFile.h"

#include "platform/Paths.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

LAtomicFile::LAtomicFile(const std::string& target) : target_(target) {
    char folder[kPathBufferSize], name[kPathBufferSize];
    _GetFolderFromPath(folder, target.c_str());
    _GetFileFromPath(name, target.c_str());
    std::string pattern = std::string(folder[0] ? folder : ".") + "/." + name + ".XXXXXX";
    std::vector<char> path(pattern.begin(), pattern.end());
    path.push_back('\0');
    const int fd = mkostemp(path.data(), O_CLOEXEC);
    if (fd < 0) return;
    temporary_ = path.data();
    file_ = LFile(fd);
}

LAtomicFile::~LAtomicFile() {
    if (!committed_ && !temporary_.empty()) unlink(temporary_.c_str());
}

bool LAtomicFile::Commit(mode_t mode, bool sync) {
    if (!file_.IsOpen()) return false;
    if (fchmod(file_.GetFd(), mode) != 0) return false;
    if (sync && fsync(file_.GetFd()) != 0) return false;
    file_.Close();
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) return false;
    committed_ = true;
    return true;
}
