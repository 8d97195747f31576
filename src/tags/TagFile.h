#pragma once

#include "platform/File.h"

#include <cstddef>
#include <cstdint>

// File access shared by the tag readers and writers.

// How long a tag operation waits for another program's lock on the file.
inline constexpr uint32_t kTagFileWaitMs = 5000;

// Opens an existing file for reading and writing with an exclusive lock. Unlike
// _OpenReadWrite it never creates the file: writing tags to a missing file fails.
LFile OpenTagFileReadWrite(const char* path);
LFile OpenTagFileRead(const char* path);

// Reads or writes exactly `size` bytes at `offset`; false on any error or short transfer.
bool ReadAt(LFile& file, int64_t offset, void* data, std::size_t size);
bool WriteAt(LFile& file, int64_t offset, const void* data, std::size_t size);
// Cuts the file at `size` bytes.
bool Truncate(LFile& file, int64_t size);
