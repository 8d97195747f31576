#pragma once

#include "platform/File.h"

#include <cstddef>
#include <cstdint>

// Positioned reads and writes on an LFile for the file codecs: each call names its offset, so
// a source or sink never depends on where the descriptor's own position happens to be.

// Reads up to `size` bytes at `offset`; returns how many were read (fewer at the end of the
// file or on an error). `failed` is set when an error, not the file's end, cut the read short.
size_t ReadFileAt(const LFile& file, int64_t offset, void* data, size_t size, bool& failed);
// The same where a failed read may count as the end (headers, sizes).
size_t ReadFileAt(const LFile& file, int64_t offset, void* data, size_t size);
// Writes all bytes at `offset`; false when not everything was written.
bool WriteFileAt(const LFile& file, int64_t offset, const void* data, size_t size);
bool TruncateFile(const LFile& file, int64_t length);

// Read-write, created with mode 0644 when missing, under a shared advisory lock taken without
// waiting: a closed LFile while another holder has the file locked exclusively. Readers of the
// file (shared locks) may still open it while it is being written.
LFile OpenSharedReadWrite(const char* path);
