#pragma once

#include <string>

// The per-user folders of the program, found through the XDG base directories:
//   application-support folder  $XDG_DATA_HOME, else ~/.local/share
//   application data folder     <application-support>/Brakwater Software/Vinora
//   music folder                `xdg-user-dir MUSIC`, else ~/Music
// Everything is looked up from the environment at each call, so a change of HOME or of the
// XDG variables takes effect at once.

// Temporary recordings are written here before they are converted.
inline constexpr const char* kTemporaryRecordingFolder = "/var/tmp/";

// The user's home folder: $HOME, else the password database entry of the current user.
std::string GetHomeFolder();
// $XDG_CONFIG_HOME when it is an absolute path, else ~/.config.
std::string GetConfigHomeFolder();

// Each writes a path of at most 259 characters into the 260-byte buffer `out`.
void GetUserApplicationSupportFolder(char* out);
void GetUserMusicFolder(char* out);
// The application data folder, each level created when missing. False when it could not be
// created (`out` still holds its path).
bool GetApplicationDataFolder(char* out);
// A named folder inside the application data folder ("Logs"), created when missing.
bool GetApplicationSubFolder(char* out, const char* name);
