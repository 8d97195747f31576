#pragma once

#include <string>

// Where the program keeps its recordings and where recordings wait before they are converted.

// The folder whose files the recordings list shows ("Settings"/"AppOutputFolder"); the
// application data folder when none is stored.
std::string GetVNOutputFolder();
// The default copy folder of the save-to-computer formats: "Vinora" in the user's music folder.
std::string GetDefaultOutputFolder();
// Stores the output folder ("" = the application data folder). False, storing nothing, when it
// is not a writable folder. `changed` (when given) says whether the stored folder changed, so
// that the list showing it can be reloaded.
bool SetVNOutputFolder(const char* folder, bool* changed = nullptr);
// A new unique ".wav" file in the temporary recordings folder; false when none could be made.
bool GetTempWaveFilePath(char* out);
