#include "platform/AtomicFile.h"


#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

LAtomicFile::LAtomicFile(const std::string& target) : target_(target) {
    // A link is kept: the file it names is the one replaced.
    struct stat info {};
    if (lstat(target.c_str(), &info) == 0 && S_ISLNK(info.st_mode)) {
        if (char* resolved = realpath(target.c_str(), nullptr)) {
            target_ = resolved;
            std::free(resolved);
        }
    }
    // The temporary goes into the target's folder: its name gets a dot in front.
    const std::size_t slash = target_.find_last_of("/\\");
    const std::size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
    std::string pattern =
        target_.substr(0, nameStart) + "." + target_.substr(nameStart) + ".XXXXXX";
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
