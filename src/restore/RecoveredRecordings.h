#pragma once

// Keeps a recording that cannot be converted: moves it into the folder "Recovered Recordings"
// of `outputFolder` (created when missing) as `name` + ".wav", or "name (n).wav" with the first
// n from 2 that is free. The path it now has goes into the 260-byte `kept`. False, with the
// recording left where it was, when the folder cannot be made or the move fails.
bool LRecoverRecording(const char* recording, const char* outputFolder, const char* name,
                       char* kept);
