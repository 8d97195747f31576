#include "platform/Log.h"

#include "platform/FileOps.h"
#include "platform/Paths.h"
#include "platform/UserFolders.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

namespace {

constexpr std::size_t kLineSize = 8192;
constexpr uint32_t kAppendLockWaitMs = 500;

std::atomic<LLog::Clock> gClock{nullptr};

// The log folder fixed at the program's start; empty until then.
std::mutex gFolderMutex;
std::string gFolder;

void LogFormatted(const char* format, va_list args) {
    char text[kLineSize];
    std::vsnprintf(text, sizeof text, format, args);
    LLog::Log(text);
}

} // namespace

void LOG(const char* format, ...) {
    va_list args;
    va_start(args, format);
    LogFormatted(format, args);
    va_end(args);
}

void LOGWARN(const char* format, ...) {
    va_list args;
    va_start(args, format);
    LogFormatted(format, args);
    va_end(args);
}

void LOGERROR(const char* format, ...) {
    va_list args;
    va_start(args, format);
    LogFormatted(format, args);
    va_end(args);
}

namespace LLog {

void Log(const char* text) {
    const Clock clock = gClock.load();
    const time_t now = clock ? clock() : std::time(nullptr);
    tm local{};
    localtime_r(&now, &local);

    char folder[kPathBufferSize], name[96], path[kPathBufferSize];
    GetFolder(folder);
    std::snprintf(name, sizeof name, "%.4d-%.2d-%.2d Vinora Records Vinyl to CD Converter Log.txt",
                  local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
    _MakeFilePath(path, folder, name);

    char line[kLineSize];
    std::snprintf(line, sizeof line, "%.2d:%.2d:%.2d %s\r\n", local.tm_hour, local.tm_min,
                  local.tm_sec, text);
    AppendFile(path, line, std::strlen(line), kAppendLockWaitMs);
}

bool GetFolder(char* out) {
    {
        std::lock_guard guard(gFolderMutex);
        if (!gFolder.empty()) {
            std::snprintf(out, kPathBufferSize, "%s", gFolder.c_str());
            return true;
        }
    }
    return GetApplicationSubFolder(out, "Logs");
}

void FixFolder(bool fixed) {
    char folder[kPathBufferSize] = "";
    if (fixed && !GetApplicationSubFolder(folder, "Logs")) folder[0] = '\0';
    std::lock_guard guard(gFolderMutex);
    gFolder = folder;
}

void SetClock(Clock clock) {
    gClock.store(clock);
}

} // namespace LLog
