#pragma once

#include "jobs/UserInteraction.h"
#include "platform/Paths.h"
#include "platform/ProgramInfo.h"

#include <unistd.h>

#include <cstdio>
#include <string>

// Small helpers the main window's source files share: its message boxes and the paths of its
// rows.

inline LMessageAnswer Ask(const std::string& text, const char* caption, LMessageButtons buttons) {
    return UserInteraction().ShowMessage(caption, text, buttons);
}

inline void Tell(const std::string& text, const char* caption = kProgramName) {
    UserInteraction().ShowMessage(caption, text, LMessageButtons::Ok);
}

template <typename... Values> std::string Printf(const char* format, Values... values) {
    char text[1024];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

inline std::string FileOf(const std::string& path) {
    char file[kPathBufferSize];
    _GetFileFromPath(file, path.c_str());
    return file;
}

inline std::string Join(const std::string& folder, const std::string& name) {
    char path[kPathBufferSize];
    _MakeFilePath(path, folder.c_str(), name.c_str());
    return path;
}

inline bool Exists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}
