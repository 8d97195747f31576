#pragma once

#include <cstddef>

// Paths are NUL-terminated byte strings in buffers of kPathBufferSize bytes, so at most 259
// characters. When a path is taken apart, both "/" and "\" count as separators. Every `out`
// below is such a buffer; it may be the same buffer as an input.

inline constexpr std::size_t kPathBufferSize = 260;

// folder + "/" + name (+ ext, given with its dot). No "/" is added when the folder is empty or
// already ends with a separator. The result is cut to fit the buffer.
void _MakeFilePath(char* out, const char* folder, const char* name);
void _MakeFilePath(char* out, const char* folder, const char* name, const char* ext);

// "/a/b.tar.gz" -> "b.tar.gz"
void _GetFileFromPath(char* out, const char* path);
// "/a/b.tar.gz" -> "b.tar"; a name that starts with its only dot stays whole (".profile").
void _GetFileNameFromPath(char* out, const char* path);
// "/a/b.tar.gz" -> ".gz", "/x/.hidden" -> ".hidden": from the last dot of the file name; empty
// when there is none, or when the dot is the path's first character.
void _GetFileExtensionFromPath(char* out, const char* path);
// "/a/b.wav" -> "/a"; "/b.wav" -> ""; "b.wav" -> "": the part before the last separator.
void _GetFolderFromPath(char* out, const char* path);

// Copies a name that the user typed without control characters and without the characters
// that cannot stand in a file name: " * . / : < > ? \ |. True when something is left.
bool PreprocessName(const char* in, char* out);
