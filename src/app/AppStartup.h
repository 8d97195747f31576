#pragma once

#include "app/MainNotify.h"
#include "restore/ConvertJob.h"

#include <string>
#include <vector>

class LMainThreadQueue;
class LUserInteraction;

// The program's start, for the desktop program and vinora-cli alike: the file-creation mask
// is set to 022 (files get the modes the code asks for, children's files are never writable by
// others), the log folder is fixed, the
// main-thread queue and the
// user interaction are installed, the conversion job reports to gMainNotify, and the processing
// queue is told what to do with the requests of a list it discards. Undone, with the queue
// thread stopped, when the object goes.
class LAppStartup {
public:
    // `interaction` nullptr: the console's.
    LAppStartup(LMainThreadQueue& queue, LUserInteraction* interaction);
    ~LAppStartup();
    LAppStartup(const LAppStartup&) = delete;
    LAppStartup& operator=(const LAppStartup&) = delete;

    // Points the queue's reports at the window (nullptr: dropped) and resumes the queue file.
    void StartQueue(LMainNotifyTarget* target);
    // The desktop program's drives: the burners libburn finds and the Virtual Burner that
    // VINORA_VIRTUAL_BURNER describes. Before the main window exists, which watches them.
    void InstallDrives();
};

// The processing queue's file, "vnprocesses.list" in the application data folder.
std::string LQueueFilePath();

// The outputs (full paths) of the requests in the queue file, the one being converted first.
// A request without a destination names its output after its source.
std::vector<std::string> LQueuedOutputs();

// What becomes of the requests of a queue file that is discarded at start-up: each recording
// that exists nowhere else (a temporary recording) is moved into "Recovered Recordings" in the
// request's output folder, the request's half-written output is removed, and the user is told
// once. Returns the paths the recordings were moved to.
std::vector<std::string> LRecoverDiscardedRequests(const std::vector<LProcessConvert>& requests);
