#pragma once

#include "platform/Paths.h"

#include <cstddef>
#include <string>
#include <vector>

// Creates one folder (permission bits 0755 less the file-creation mask). True when the folder
// exists afterwards, also when it was already there.
bool CreateFolder(const char* path);
// Creates a folder and every missing folder above it.
bool CreateFolderTree(const char* path);
bool IsFolder(const char* path);

// The entries of a folder whose names match a wildcard pattern ("*.wav", "track??.mp3"),
// compared without regard to case, in the order of their names. "." and ".." are never listed,
// nor hidden entries (names starting with ".") unless the pattern starts with a dot.
//   LFolderIterator it(folder, "*.wav");
//   while (it.Next()) use(it.GetPath());
class LFolderIterator {
public:
    explicit LFolderIterator(const char* folder, const char* pattern = "*");

    // Moves to the next entry; false when there is none left (or the folder cannot be read).
    bool Next();
    // After Next() returned true: name of the current entry, and folder + "/" + name (cut to 259
    // characters).
    const char* GetName() const { return names_[index_ - 1].c_str(); }
    const char* GetPath() const { return path_; }
    bool IsFolder() const;

private:
    std::string folder_;
    std::vector<std::string> names_;
    std::size_t index_ = 0;
    char path_[kPathBufferSize] = {};
};
