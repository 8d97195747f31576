#include "platform/Folders.h"

#include "platform/Paths.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <filesystem>
#include <fnmatch.h>
#include <sys/stat.h>

bool CreateFolder(const char* path) {
    return mkdir(path, 0755) == 0 || (errno == EEXIST && IsFolder(path));
}

bool CreateFolderTree(const char* path) {
    // Level by level, each with the program's folder mode (the file-creation mask is cleared).
    const std::string full = path;
    for (std::size_t slash = full.find('/', 1); slash != std::string::npos;
         slash = full.find('/', slash + 1))
        CreateFolder(full.substr(0, slash).c_str());
    return full.empty() ? false : CreateFolder(path);
}

bool IsFolder(const char* path) {
    struct stat info;
    return stat(path, &info) == 0 && S_ISDIR(info.st_mode);
}

LFolderIterator::LFolderIterator(const char* folder, const char* pattern) : folder_(folder) {
    DIR* dir = opendir(folder);
    if (!dir) return;
    while (const dirent* entry = readdir(dir)) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        if (fnmatch(pattern, entry->d_name, FNM_CASEFOLD | FNM_PERIOD) == 0) names_.emplace_back(name);
    }
    closedir(dir);
    std::sort(names_.begin(), names_.end());
}

bool LFolderIterator::Next() {
    if (index_ >= names_.size()) return false;
    _MakeFilePath(path_, folder_.c_str(), names_[index_].c_str());
    ++index_;
    return true;
}

bool LFolderIterator::IsFolder() const {
    return ::IsFolder(path_);
}
