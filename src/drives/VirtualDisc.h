#pragma once

#include "burn/DiscService.h"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// The Virtual Burner's setting, VINORA_VIRTUAL_BURNER:
//   MEDIA:PATH[,used][,capacity=SECTORS][,open][,slow=MS][,write-error=SECTOR]
//             [,verify-error=SECTOR][,not-ready=N][,no-write12][,no-streaming]
// MEDIA is cd-r, cd-rw, dvd-r, dvd-rw, dvd+r, dvd+rw, bd-r, bd-re or none (an empty tray).
struct LVirtualBurnerOptions {
    std::string text;                         // the setting as given
    LDiscMediaKind media = LDiscMediaKind::None;
    std::string path;                         // where the disc's content is written
    bool used = false;                        // the disc holds data already
    int64_t capacity = -1;                    // free blocks of a blank disc; -1 the media's own
    bool open = false;                        // the tray starts open
    unsigned slowMs = 0;                      // delay of every write the drive receives
    int64_t writeError = -1;                  // the write covering this block fails
    int64_t verifyError = -1;                 // reading this block back fails
    unsigned notReady = 0;                    // the drive answers "not ready" this many times
    bool noWrite12 = false;                   // the drive rejects WRITE(12)
    bool noStreaming = false;                 // the drive rejects streaming writes

    // False with `error` set when the text is not a valid setting.
    static bool Parse(const std::string& text, LVirtualBurnerOptions& out, std::string& error);
};

// The media names of the setting ("cd-r", ...); "none" for None.
const char* VirtualMediaName(LDiscMediaKind kind);
// The free blocks of a blank disc of that kind.
uint32_t VirtualDefaultCapacity(LDiscMediaKind kind);
bool IsRewritable(LDiscMediaKind kind);

// A recorded track of the disc, in blocks.
struct LVirtualTrack {
    uint32_t start = 0;
    uint32_t size = 0;
    uint32_t session = 1;
};

// How far a rewritable disc that formats itself while written (DVD+RW, BD-RE) has got.
enum class LVirtualFormat { None, Started, Complete };

// The disc in the Virtual Burner and its tray. The audio CD side (the disc service) and the
// data disc side (MMC commands) share one object, so a disc written through either looks used
// to both.
//
// Persistence: the state lives in PATH.state, a few "key=value" lines (the setting it was made
// for, media, tray, status, used blocks, capacity, and the layout the MMC drive keeps: closed
// sessions and tracks, the open track, the format of a rewritable) replaced whole (written
// beside it and renamed) after every change. A later process whose VINORA_VIRTUAL_BURNER is the same text carries on
// with that disc: a disc burnt by one `vinora-cli burn-audio` is used for the next. A different
// setting text is a different disc: the state starts from the setting again.
//
// Every member may be called from any thread.
class LVirtualDisc {
public:
    enum class Status { Blank, Incomplete, Complete };

    // Everything the drive records about the disc. `used` is the number of blocks recorded from
    // the start, which on a sequential disc is the next writable address.
    struct State {
        LDiscMediaKind media = LDiscMediaKind::None;
        bool trayOpen = false;
        Status status = Status::Blank;
        uint32_t used = 0;
        uint32_t capacity = 0;
        std::vector<LVirtualTrack> tracks; // closed tracks, in order
        uint32_t sessions = 0;             // closed sessions
        uint32_t sessionFirstTrack = 1;    // number of the first track of the last session
        bool trackOpen = false;            // a track is being written and not closed yet
        uint32_t trackStart = 0;
        uint32_t trackReserved = 0;        // its reserved size; 0 when it was not reserved
        LVirtualFormat format = LVirtualFormat::None;
    };

    explicit LVirtualDisc(LVirtualBurnerOptions options);

    const LVirtualBurnerOptions& Options() const { return options_; }
    const std::string& Path() const { return options_.path; }

    LDiscMediaKind Media() const;
    bool TrayOpen() const;
    // A disc is loaded and the tray closed.
    bool Present() const;
    Status DiscStatus() const;
    uint32_t UsedBlocks() const;
    uint32_t Capacity() const;
    uint32_t FreeBlocks() const;
    bool Erasable() const;
    // Counts down the "not ready" answers: true while the drive is still not ready.
    bool TakeNotReady();
    // After the drive loads the disc, it is not ready for the first "not-ready" answers again.
    void ArmNotReady();

    State GetState() const;
    // Replaces the state; `save` false keeps the change in memory only (the blocks of a running
    // write), until the next saved change.
    void SetState(const State& state, bool save);

    // Loads a disc (a blank one, or one holding data) and closes the tray.
    void Insert(LDiscMediaKind kind, bool used);
    // Takes the disc out; the tray stays open.
    void Remove();
    void SetTrayOpen(bool open);
    // The next write covering `block` fails; -1 for none.
    void FailWriteAt(int64_t block);
    int64_t WriteErrorBlock() const;

    // After a write: `blocks` more blocks used, the disc left in `status`.
    void Written(uint32_t blocks, Status status);
    // After an erase: blank again.
    void MakeBlank();
    // An erase: blank again, and the files of what was written (PATH, PATH.bin, PATH.cue) gone.
    void EraseContent();

    // Calls `changed` after every change of disc or tray, until the handle goes.
    std::shared_ptr<void> Watch(std::function<void()> changed);

private:
    // A disc just loaded: blank, or holding one closed track when `used`.
    static void FillNew(State& state, LDiscMediaKind kind, bool used);
    void Load();
    void SaveAndNotify(std::unique_lock<std::mutex>& lock);

    LVirtualBurnerOptions options_;
    mutable std::mutex mutex_;
    State state_;
    int64_t writeError_;
    unsigned notReady_;
    struct Watchers {
        std::mutex mutex;
        std::list<std::function<void()>> calls;
    };
    std::shared_ptr<Watchers> watchers_ = std::make_shared<Watchers>();
};
