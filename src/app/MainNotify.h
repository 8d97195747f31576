#pragma once

#include "jobs/MainThreadQueue.h"
#include "record/RecordingPage.h"
#include "restore/ConvertNotify.h"

#include <memory>
#include <mutex>
#include <string>

// Window messages the processing queue sends to the main window.
enum LMainNotifyMessage : int {
    WM_NOTIFY_FILES_PROCESSING = WM_RECORDING_FILE_QUEUED, // one more file being processed
    WM_NOTIFY_ADD = 2042,              // text: a finished file to add to the list
    WM_NOTIFY_FILE = 2045,             // text: the file being converted
    WM_NOTIFY_PROGRESS = 2046,         // text: the status text; value: percent done
};

// The receiver of the messages: the main window. Called on the main thread.
class LMainNotifyTarget {
public:
    virtual void OnMainNotify(int message, const std::string& text, int value) = 0;

protected:
    ~LMainNotifyTarget() = default;
};

// Reports from the queue thread to the main window, posted through the main-thread queue so
// that the window is only touched on its own thread. Until a target is set every report is
// dropped, and reports still pending when the target is changed or cleared (on the main
// thread) reach nothing.
class MainNotify : public LConvertNotify {
public:
    // The window and the queue that carries messages to its thread; nullptr drops reports.
    void SetTarget(LMainNotifyTarget* target,
                   LMainThreadQueue* queue = LMainThreadQueue::Current());

    void SetStatusText(const char* text) override;
    std::string GetStatusText() const;

    // Posts WM_NOTIFY_FILE with the name.
    void NotifyFile(const char* name) override;
    // Posts WM_NOTIFY_ADD with the path.
    void NotifyAdd(const char* path) override;
    // Posts WM_NOTIFY_PROGRESS with the status text and the whole percent (values past 100
    // fold back: 150 is 50), only when the percent changed since the last post.
    void NotifyProgress(double fraction) override;

private:
    void Post(int message, std::string text, int value);

    mutable std::mutex mutex_;
    std::string statusText_;
    std::shared_ptr<LMainNotifyTarget*> target_; // shared with the pending posts
    LMainThreadQueue* queue_ = nullptr;
    int lastPercent_ = 0;
};

// The main window's notifier; the conversion job reports to it.
extern MainNotify gMainNotify;
