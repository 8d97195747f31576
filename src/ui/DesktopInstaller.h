#pragma once

#include <string>

// Installs the program for the current user: a desktop entry that opens wave and MP3 files
// with `program`, in ~/.local/share/applications, and the icon in the hicolor theme of
// ~/.local/share/icons. Returns an error text, empty when it worked.
std::string LInstallDesktopEntry(const std::string& program);
