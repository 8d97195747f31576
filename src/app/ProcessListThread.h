#pragma once

#include "app/MainNotify.h"
#include "jobs/Thread.h"
#include "platform/File.h"
#include "restore/ConvertJob.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

// A thread whose reports go to the main window through gMainNotify.
class MainProcessNotify : public LThread {};

// What the queue does with its file when a job returns PROCESS_STOPPED.
enum PROCESS_STOP_BEHAVIOR : int {
    STOP_KEEP_LIST = 0,   // the stopped request stays at the head and runs again next time
    STOP_DROP_ITEM = 1,   // the stopped request is removed like a finished one
    STOP_DELETE_LIST = 2, // the whole queue file is deleted
};

// The queue file: an 8-byte little-endian header {version 1, resume count, record size}
// followed by the records, oldest first. An empty file is an empty queue.
namespace ProcessListFile {

inline constexpr uint16_t kVersion = 1;
inline constexpr std::size_t kHeaderSize = 8;
// How long each open of the file waits for its lock before going on without it.
inline constexpr uint32_t kLockWaitMs = 5000;

// The whole records of a list that is being discarded, oldest first.
using DiscardHandler = std::function<void(const std::vector<uint8_t>& records)>;

// Whether an existing list is to be resumed: a valid header with at most "FailCount" earlier
// resumes. A resumed list gets its resume count raised; any other file is deleted, after
// `discarded` (when given) was handed the whole records it held.
bool Resume(const char* path, std::size_t recordSize, const DiscardHandler& discarded = {});
// Appends a record, writing the header first into an empty or missing file. A failed append is
// taken back, leaving the file as it was.
bool Append(const char* path, const void* record, std::size_t recordSize);
// Reads the head record. Returns the bytes read: recordSize, or fewer at the end of the list.
std::size_t ReadHead(const char* path, void* record, std::size_t recordSize);
// Removes the head record; the rest follows a fresh header (resume count 0) in a new file that
// takes the list's place whole. A list whose only record is removed becomes an empty file.
// False, with the list as it was, when the file could not be rewritten.
bool DropHead(const char* path, std::size_t recordSize);
void Delete(const char* path);

// Takes the right to work through the list, held while `held` stays open: one program at a time
// runs a queue (the desktop program and `vinora-cli queue run` share it), or two would convert
// the same request into one file and each drop a head. Waits while another program holds it,
// asking `stopped` between tries; false when stopped first. A lock that cannot be made at all
// (a read-only folder) does not hold the queue up: the list itself then cannot change either.
bool TakeRun(const char* path, LFile& held, const std::function<bool()>& stopped);

} // namespace ProcessListFile

// The processing queue: requests are kept in a file and handed one at a time, oldest first, to
// `Process(LProcessInterface&, Record&)` on this thread, while further requests are appended.
// Requests left in the file when the program ended are resumed at the next start. Overall
// progress (the running job's fraction plus the requests finished, over the requests added)
// goes to gMainNotify.
template <typename Record, typename Base> class LProcessListThread : public Base {
public:
    ~LProcessListThread() override { this->StopThreadNow(); }

    // What becomes of the requests of a list that is discarded at start-up.
    void SetDiscardHandler(std::function<void(const std::vector<Record>&)> handler) {
        std::lock_guard guard(mutex_);
        discarded_ = std::move(handler);
    }

    // Sets the queue file and resumes what it holds (starting the thread when `start`).
    void SetListFilePath(const char* path, PROCESS_STOP_BEHAVIOR behaviour, bool start) {
        std::lock_guard guard(mutex_);
        path_ = std::string(path).substr(0, 259);
        behaviour_ = behaviour;
        const auto discarded = [this](const std::vector<uint8_t>& bytes) {
            if (!discarded_) return;
            std::vector<Record> records(bytes.size() / sizeof(Record));
            std::memcpy(records.data(), bytes.data(), records.size() * sizeof(Record));
            discarded_(records);
        };
        if (ProcessListFile::Resume(path_.c_str(), sizeof(Record), discarded) && start)
            StartLocked();
    }

    // Appends a request and starts the thread when it is not working through the list. False
    // when the request could not be stored.
    bool Add(const Record& request) {
        std::lock_guard guard(mutex_);
        if (!ProcessListFile::Append(path_.c_str(), &request, sizeof(Record))) return false;
        requestsAdded_ += 1;
        if (!active_) StartLocked();
        return true;
    }

    // The running job's fraction as overall progress.
    void SetProgress(double fraction) override {
        double overall = fraction + requestsFinished_;
        const double added = requestsAdded_;
        if (added > 1) overall /= added;
        gMainNotify.NotifyProgress(overall);
    }

protected:
    void ThreadFunction() override {
        requestsFinished_ = 0;
        bool listEnded = false;
        std::string path;
        {
            std::lock_guard guard(mutex_);
            path = path_;
        }
        LFile run;
        const bool mine =
            ProcessListFile::TakeRun(path.c_str(), run, [this] { return this->IsToStop(); });
        while (mine && !this->IsToStop()) {
            Record record;
            {
                std::lock_guard guard(mutex_);
                const std::size_t got =
                    ProcessListFile::ReadHead(path_.c_str(), &record, sizeof(Record));
                if (got < sizeof(Record)) {
                    if (got > 0) ProcessListFile::Delete(path_.c_str());
                    // Decided under the lock, so that a request added from now on starts
                    // the thread again.
                    active_ = false;
                    listEnded = true;
                    requestsAdded_ = 0;
                    requestsFinished_ = 0;
                    break;
                }
            }
            if (Process(*this, record) == PROCESS_STOPPED) {
                if (behaviour_ == STOP_KEEP_LIST) break;
                if (behaviour_ == STOP_DELETE_LIST) {
                    std::lock_guard guard(mutex_);
                    ProcessListFile::Delete(path_.c_str());
                    requestsAdded_ = 0;
                    break;
                }
            }
            std::lock_guard guard(mutex_);
            requestsFinished_ += 1;
            // A file that cannot be rewritten would hand out the same head again: the run ends
            // here and the next start decides (the list's resume count keeps that finite).
            if (!ProcessListFile::DropHead(path_.c_str(), sizeof(Record))) break;
        }
        if (!listEnded) {
            std::lock_guard guard(mutex_);
            active_ = false;
        }
        // Not under the lock: Add may hold it while it waits for this thread to end.
        SetProgress(0);
    }

private:
    // With the lock held: starts the thread, first letting a thread that has decided to end
    // finish (its last steps do not take the lock).
    void StartLocked() {
        if (this->IsRunning()) this->ProcessWait(WAIT_FOREVER);
        active_ = true;
        this->Start(1);
    }

    std::mutex mutex_;
    std::string path_;
    PROCESS_STOP_BEHAVIOR behaviour_ = STOP_KEEP_LIST;
    bool active_ = false;                      // working through the list, or about to
    std::atomic<double> requestsAdded_ = 0;    // requests added in this run
    std::atomic<double> requestsFinished_ = 0; // requests finished since the thread started
    std::function<void(const std::vector<Record>&)> discarded_;
};

// The program's one processing queue.
extern LProcessListThread<LProcessConvert, MainProcessNotify> thrConvertList;
