#include "cli/CliConvertRequest.h"
#include "cli/CliMainLoop.h"
#include "cli/Commands.h"

#include "app/AppStartup.h"
#include "app/ProcessListThread.h"
#include "platform/File.h"
#include "platform/Paths.h"
#include "platform/UserFolders.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>

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
    std::snprintf(out, kPathBufferSize, "%s", LQueueFilePath().c_str());
    return true;
}

// The queue's progress on a terminal: the file being converted and the percent done.
class QueueProgress : public LMainNotifyTarget {
public:
    ~QueueProgress() {
        if (shown_) std::fputc('\n', stderr);
    }

    void OnMainNotify(int message, const std::string& text, int value) override {
        if (message == WM_NOTIFY_FILE) file_ = text;
        if (message == WM_NOTIFY_PROGRESS) percent_ = value;
        if (message != WM_NOTIFY_FILE && message != WM_NOTIFY_PROGRESS) return;
        std::fprintf(stderr, "\r%s %3d%% ", file_.c_str(), percent_);
        std::fflush(stderr);
        shown_ = true;
    }

private:
    std::string file_;
    int percent_ = 0;
    bool shown_ = false;
};

int Add(const char* path, const CliArgs& args) {
    LProcessConvert request;
    if (!CliParseConvertRequest(CliArgs(args.begin() + 1, args.end()), kUsage, request)) return 2;
    if (!ProcessListFile::Append(path, &request, sizeof request)) {
        std::fprintf(stderr, "vinora-cli queue: %s cannot be written: %s\n", path,
                     std::strerror(errno));
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
    CliMainLoop loop;
    QueueProgress progress;
    if (isatty(STDERR_FILENO)) gMainNotify.SetTarget(&progress, &CliMainQueue());
    thrConvertList.SetListFilePath(path, STOP_KEEP_LIST, true);
    const bool done = loop.Run([] { return !thrConvertList.IsRunning(); });
    gMainNotify.SetTarget(nullptr);
    if (done) return 0;
    thrConvertList.StopThreadNow();
    std::fprintf(stderr, "vinora-cli queue: stopped; the rest stays queued\n");
    return 1;
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
