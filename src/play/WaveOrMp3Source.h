#pragma once

#include "codecs/AudioFileTypes.h"
#include "sound/SoundSource.h"

#include <functional>
#include <string>

// What the split and join jobs share: the audio file registry's type of a file (nullptr for a
// file that is neither wave nor MP3), the file opened through it, and reading that tells how
// much of a block was the file's own audio.
const LAudioFileType* SplitJoinFileType(const std::string& path);
// An error source for a file of no known type.
LSoundSource OpenWaveOrMp3Source(const std::string& path);

// Reads `frames` frames and returns how many of them are the file's audio: fewer when the file
// ended before its header said, which a file source reports by lowering its end as it finds
// out; the rest of the block is silence.
int ReadFileFrames(LSoundSourceBase& source, int* buffer, int frames);
// Logs the warning for a file that ended at `endFrame` (at `rate`), before its header said.
void LogShortFile(const std::string& path, int endFrame, int rate);

// Creates an empty hidden file beside `target` (".NAME.XXXXXX.EXT", mode 0644) to be written
// and then renamed to a free name; "" when none can be made.
std::string MakeHiddenTemporary(const std::string& target);

// "folder/name (01).ext" for counter 1 and so on; the path itself for counter 0.
std::string NumberedName(const std::string& path, int counter);

// Syncs the complete file `temporary` to the disk and gives it the name `name(counter)` for
// counter 0, 1, 2... (0 being the name wanted), the first that no file has, never replacing one.
// The name taken, or "" (with errno set) when the sync or the rename failed for another reason.
std::string CommitToFreeName(const std::string& temporary,
                             const std::function<std::string(int counter)>& name);

// Copies `from` whole to `target`, or to the first free NumberedName of it when a file has that
// name; the copy's path, or "" when the copy failed (nothing is left behind then).
std::string CopyToFreeName(const std::string& from, const std::string& target);
