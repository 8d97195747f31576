#include "play/WaveOrMp3Source.h"

#include "platform/AtomicFile.h"
#include "platform/FileOps.h"
#include "platform/Log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <vector>

namespace fs = std::filesystem;

namespace {

// More names than any folder holds: past this a rename that keeps failing gives up.
constexpr int kMaxCounter = 10000;

} // namespace

const LAudioFileType* SplitJoinFileType(const std::string& path) {
    return LFindAudioFileType(path.c_str());
}

LSoundSource OpenWaveOrMp3Source(const std::string& path) {
    const LAudioFileType* type = SplitJoinFileType(path);
    if (!type) return LSoundSource(new LSoundSourceError(sndErrUnsupported));
    return type->openSource(path.c_str());
}

int ReadFileFrames(LSoundSourceBase& source, int* buffer, int frames) {
    const int start = source.GetPositionSample();
    source.Read(buffer, frames);
    return std::clamp(source.GetEndSample() - start, 0, frames);
}

void LogShortFile(const std::string& path, int endFrame, int rate) {
    char time[32];
    LSoundTime::FromSamples(endFrame, rate)._GetText(time);
    LOGWARN("The file %s ends at %s, before its header says: what follows is left out",
            path.c_str(), time);
}

std::string MakeHiddenTemporary(const std::string& target) {
    const fs::path wanted(target);
    const std::string folder = wanted.has_parent_path() ? wanted.parent_path().string() : ".";
    const std::string extension = wanted.extension().string();
    const std::string pattern = folder + "/." + wanted.stem().string() + ".XXXXXX" + extension;
    std::vector<char> path(pattern.begin(), pattern.end());
    path.push_back('\0');
    const int fd = mkostemps(path.data(), static_cast<int>(extension.size()), O_CLOEXEC);
    if (fd < 0) return {};
    fchmod(fd, kFileMode);
    close(fd);
    return path.data();
}

std::string NumberedName(const std::string& path, int counter) {
    if (counter == 0) return path;
    const fs::path wanted(path);
    char number[16];
    std::snprintf(number, sizeof number, " (%02d)", counter);
    return (wanted.parent_path() / (wanted.stem().string() + number + wanted.extension().string()))
        .string();
}

std::string CommitToFreeName(const std::string& temporary,
                             const std::function<std::string(int counter)>& name) {
    // On the disk before it takes a name that says it is finished.
    if (!SyncFile(temporary.c_str())) return {};
    for (int counter = 0; counter < kMaxCounter; ++counter) {
        const std::string target = name(counter);
        if (RenameNoReplace(temporary.c_str(), target.c_str())) return target;
        if (errno != EEXIST) return {};
    }
    errno = EEXIST;
    return {};
}

std::string CopyToFreeName(const std::string& from, const std::string& target) {
    const std::string temporary = MakeHiddenTemporary(target);
    if (temporary.empty()) return {};
    std::string copy;
    if (CopyFile(from.c_str(), temporary.c_str()))
        copy =
            CommitToFreeName(temporary, [&](int counter) { return NumberedName(target, counter); });
    if (copy.empty()) unlink(temporary.c_str());
    return copy;
}
