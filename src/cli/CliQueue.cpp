#include "cli/CliConvertRequest.h"
#include "cli/CliJobProgress.h"
#include "cli/Commands.h"

#include "app/ProcessListThread.h"
#include "platform/File.h"
#include "platform/Paths.h"
#include "platform/UserFolders.h"

#include <cstdio>
#include <string>

namespace {

constexpr const char* kUsage =
    "usage: vinora-cli queue add SRC DEST [--restore] [--copy-to DIR] | queue list | "
    "queue run\n";

bool QueueFilePath(char* out) {
    char folder[kPathBufferSize];
    if (!GetApplicationDataFolder(folder)) {
        std::fprintf(stderr, "vinora-cli queue: the data folder %s cannot be created\n", folder);
        return false;
    }
    _MakeFilePath(out, folder, "vnprocesses.list");
    return true;
}

int Add(const char* path, const CliArgs& args) {
    LProcessConvert request;
    if (!CliParseConvertRequest(CliArgs(args.begin() + 1, args.end()), kUsage, request)) return 2;
    if (!ProcessListFile::Append(path, &request, sizeof request)) {
        std::fprintf(stderr, "vinora-cli queue: %s cannot be written\n", path);
        return 2;
    }
    return 0;
}

// "SOURCE -> DESTINATION" per request, oldest first.
int List(const char* path) {
    LFile file(_OpenRead(path, ProcessListFile::kLockWaitMs));
    if (!file.IsOpen()) return 0;
    file.Seek(ProcessListFile::kHeaderSize);
    LProcessConvert request;
    while (file.Read(&request, sizeof request) == static_cast<ssize_t>(sizeof request))
        std::printf("%s -> %s\n", request.sourcePath,
                    request.destinationPath[0] ? request.destinationPath : request.outputFolder);
    return 0;
}

// Resumes the queue as the program does at start-up and waits until it is worked through.
int Run(const char* path) {
    CliJobProgress progress;
    thrConvertList.SetListFilePath(path, STOP_KEEP_LIST, true);
    while (thrConvertList.IsRunning()) {
        if (progress.IsToStop()) {
            thrConvertList.StopThreadNow();
            std::fprintf(stderr, "vinora-cli queue: stopped; the rest stays queued\n");
            return 1;
        }
        thrConvertList.ProcessWait(100);
    }
    return 0;
}

} // namespace

int CliQueue(const CliArgs& args) {
    char path[kPathBufferSize];
    if (args.empty()) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    if (!QueueFilePath(path)) return 2;
    if (args[0] == "add") return Add(path, args);
    if (args[0] == "list" && args.size() == 1) return List(path);
    if (args[0] == "run" && args.size() == 1) return Run(path);
    std::fputs(kUsage, stderr);
    return 2;
}
