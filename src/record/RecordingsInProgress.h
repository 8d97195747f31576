#pragma once

#include <string>
#include <vector>

// The temporary recordings being made, listed (path and name, one a line) in
// "vnrecordings.list" of the application data folder. A program killed while it records leaves
// its recording listed, and the next start keeps it where the user finds it.

// Lists a temporary recording as soon as it is opened.
void LNoteRecordingStarted(const char* path, const std::string& name);
// Forgets a recording once it was queued, kept elsewhere or deleted.
void LNoteRecordingEnded(const char* path);

// Moves every listed recording that still exists and that no running recorder holds into
// "Recovered Recordings" of `outputFolder` under its name, and forgets it. Returns the paths the
// recordings were moved to.
std::vector<std::string> LRecoverAbandonedRecordings(const std::string& outputFolder);
