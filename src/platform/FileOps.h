#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <vector>

// Whole-file helpers and file-system operations on paths. Lock waits are in milliseconds, as
// for the open functions of "platform/File.h".

// Appends all `length` bytes to the file (created when missing) under an exclusive lock.
bool AppendFile(const char* path, const void* data, std::size_t length, uint32_t waitMs);
// Reads the whole file under a shared lock. False when it cannot be opened or read.
bool LoadFile(const char* path, std::vector<uint8_t>& data, uint32_t waitMs);
// Replaces the file's contents, whole or not at all (the old content stays when anything fails,
// and a missing file stays missing), under an exclusive lock of the old file; the new content is
// on the disk before it takes the name. False when not every byte was written.
bool SaveFile(const char* path, const void* data, std::size_t length, uint32_t waitMs);

// Copies a file in chunks of 8,192 bytes into a temporary beside the target, renamed over it
// when complete and synced (an existing target is never cut short); the copy gets the mode 0644.
// False when either file cannot be opened, a read or write fails, or both name the same file.
bool CopyFile(const char* from, const char* to);
// Renames a file, replacing an existing target. Across file systems the file is copied whole,
// synced to the disk, and only then is the source removed.
bool MoveFile(const char* from, const char* to);
// Renames a file only when nothing has the new name: false with errno EEXIST when something
// does (it is never replaced). A change of case only is a rename, also on a file system that
// ignores case.
bool RenameNoReplace(const char* from, const char* to);
// Flushes a written file (or a folder's entries) to the disk; false when it cannot be opened or
// synced.
bool SyncFile(const char* path);
// Whether both paths lead to one file: the same text, or two names of the same file (a change of
// case on a file system that ignores case, a link). Names that differ only in case are two files
// on a file system that tells case apart.
bool IsSameFile(const char* a, const char* b);
// Whether anything has the name, a link to nothing included: the name is taken, and whatever
// has it is never replaced.
bool IsNameTaken(const char* path);
// Whether a file can be created in the folder (tries with a file "__wt" and removes it).
bool TestFolderWritable(const char* folder);
// Creates a new empty file with a unique name "0XXXXXX" + ext in the folder (ext with its dot,
// may be empty), with the permission bits 0644, and puts its path in the 260-byte `out`.
bool GetTempFile(const char* folder, char* out, const char* ext);

// Seconds since the epoch, or -1 when unknown (missing file, or a file system that does not
// record the creation time).
time_t GetFileModifiedTime(const char* path);
time_t GetFileCreateTime(const char* path);
