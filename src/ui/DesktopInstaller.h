#pragma once

#include <string>

// The name of the program's desktop entry and icon, the same for an installed package.
inline const std::string kDesktopId = "com.brakwater.Vinora";

// Installs the program for the current user: a desktop entry that opens wave and MP3 files
// with `program`, in ~/.local/share/applications, and the icon in the hicolor theme of
// ~/.local/share/icons. Returns an error text, empty when it worked.
// An entry installed this way takes the place of an installed package's entry of the same name.
std::string LInstallDesktopEntry(const std::string& program);
// Where LInstallDesktopEntry puts the entry.
std::string LUserDesktopEntryPath();
