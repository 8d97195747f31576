#pragma once

#include "platform/File.h"

#include <string>
#include <sys/types.h>

// A file written whole or not at all: the content goes into a hidden temporary file beside the
// target (".name.XXXXXX"), which Commit renames over the target in one step. Until then the
// target keeps its old content; a file never committed (an error, a full disk, a crash) leaves
// the target as it was, and the temporary is removed when the object goes. A target that is a
// symbolic link stays one: the file it names is replaced.
class LAtomicFile {
public:
    // Creates the temporary beside `target`; IsOpen() tells whether that worked.
    explicit LAtomicFile(const std::string& target);
    ~LAtomicFile();
    LAtomicFile(const LAtomicFile&) = delete;
    LAtomicFile& operator=(const LAtomicFile&) = delete;

    bool IsOpen() const { return file_.IsOpen(); }
    LFile& File() { return file_; }
    const std::string& TemporaryPath() const { return temporary_; }

    // Gives the file `mode`, flushes it to the disk when `sync` (before a source it replaces
    // is deleted), and renames it over the target. False, leaving the target alone, when any
    // step fails.
    bool Commit(mode_t mode, bool sync);

private:
    std::string target_;
    std::string temporary_;
    LFile file_;
    bool committed_ = false;
};

// The mode of files the program creates: readable by everyone, writable by the user.
inline constexpr mode_t kFileMode = 0644;
