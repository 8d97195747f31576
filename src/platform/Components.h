#pragma once

// Optional programs the application runs, such as the MP3 encoder "mp3el". Each component is
// a file or folder named after it in the components folder,
// <application-support>/Brakwater Software/Components, where the download installs it.

// The components folder into the 260-byte `out`, created with every missing folder above it.
// True when it exists afterwards.
bool GetComponentFolder(char* out);

#include <string>

// Looks for a component; `out` (260 bytes) gets its path and true when it is there. The
// components folder comes first; a plain file found there is made executable (0755) and used
// only when it runs (see LComponentRuns). When `allowSystemCopy` is set and the folder has no such component,
// a copy installed with the program (PREFIX/libexec/vinora/<name> for a program in PREFIX/bin)
// stands in for it, else a program installed on the system that does the same job: "mp3el" is
// the LAME encoder, "lame" on PATH. Otherwise false, with `out` holding where the component would
// be installed (or only the folder's path when the folder cannot be had).
bool GetComponentPath(const char* name, char* out, bool allowSystemCopy);

// Whether the program at `path` runs: "PATH --version" ends with status 0 within 5 seconds.
// A program found to run is not asked again while its file stays the same (same file, size,
// mode and modification time).
bool LComponentRuns(const char* path);
// The first executable file called `program` in the folders of PATH, or empty.
std::string LFindProgramOnPath(const char* program);

// Whether the component is delivered as a zip archive that unpacks into a folder.
bool LIsZipComponent(const char* name);
// The name of the component's file on the download server: the bare name, "<name>.zip" for
// zip components, and "ffmpeg4" gets an "i" appended ("ffmpeg4i.zip").
void LGetComponentServerFileName(char* out, const char* name);
