#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// The disc recording service: the optical drives of this machine, what is loaded in them, and
// the operations the audio CD job and the settings page need (tray, reservation, erase, audio
// burn). The implementations live with the drive adapters; the jobs see only this interface.

// The kind of disc a drive holds.
enum class LDiscMediaKind : int {
    None,
    CDR,
    CDRW,
    CDROM,
    DVDR,
    DVDRW,
    DVDPlusR,
    DVDPlusRW,
    DVDRAM,
    DVDROM,
    BDR,
    BDRE,
    BDROM,
    Other,
};

// What a drive reports about its disc.
struct LDiscDeviceStatus {
    bool mediaPresent = false;
    // The drive is loading, spinning up or closing its tray: the rest is not known yet.
    bool inTransition = false;
    bool blank = false;
    bool appendable = false;
    bool erasable = false;
    LDiscMediaKind kind = LDiscMediaKind::None;
    uint32_t freeBlocks = 0;
    uint32_t usedBlocks = 0;
    // Write speeds the drive offers for the loaded disc, kilobytes (1000 bytes) per second.
    std::vector<double> burnSpeeds;
    // The fastest of them; 0 when not known.
    uint32_t maximumWriteSpeed = 0;
};

// Who a drive is and what it can write.
struct LDiscDeviceInfo {
    std::string vendor;
    std::string product;
    bool canWriteCD = false;
    bool canWriteCDSAO = false;
    bool canWriteDVD = false;
    bool canWriteDVDPlusR = false;
    bool canWriteDVDRAM = false;
};

// The state of a running erase or burn.
enum class LDiscOperationState : int {
    Idle,
    Preparing,
    SessionOpen,
    TrackWrite,
    TrackClose,
    SessionClose,
    Finishing,
    Verifying,
    Erasing,
    Done,
    Failed,
};

struct LDiscOperationStatus {
    LDiscOperationState state = LDiscOperationState::Idle;
    // 0.0 to 1.0; negative when the service cannot tell.
    float fraction = -1.0f;
    // 1 for the first track; 0 when not writing a track.
    int currentTrack = 0;
};

// Supplies one audio track's data while it is burnt: raw CD-DA, 44100 Hz stereo 16-bit
// little-endian frames. The service calls PreBurn before the first block, Produce until the
// track's length is delivered, and PostBurn at the end (also after a failure). Calls come on
// the service's own thread. A non-zero return is an error code that fails the burn.
class LAudioTrackProducer {
public:
    virtual ~LAudioTrackProducer() = default;
    virtual int32_t PreBurn() = 0;
    // Fills `out` with up to `bytes` bytes (a multiple of 4) and says how many it wrote.
    virtual int32_t Produce(uint8_t* out, uint32_t bytes, uint32_t& produced) = 0;
    virtual void PostBurn() = 0;
};

inline constexpr uint32_t kAudioBlockBytes = 2352;

// One track of an audio layout; the producer stays the caller's.
struct LDiscAudioTrack {
    uint32_t lengthBlocks = 0;
    std::string title;     // CD-TEXT title; empty for none
    std::string performer; // CD-TEXT performer; empty for none
    LAudioTrackProducer* producer = nullptr;
};

struct LDiscBurnOptions {
    int speed = 0; // whole "x"; 0 the fastest
    bool cdText = false;
};

// One drive. Every call may block for as long as the drive takes; none throws.
class LDiscDevice {
public:
    virtual ~LDiscDevice() = default;

    virtual LDiscDeviceInfo CopyInfo() = 0;
    virtual LDiscDeviceStatus CopyStatus() = 0;
    // False once the drive has gone (unplugged).
    virtual bool IsValid() = 0;

    virtual bool EjectMedia() = 0;
    virtual bool CloseTray() = 0;
    // Keeps the disc in the drive (the eject button does nothing) while reservations are held.
    virtual bool AcquireMediaReservation() = 0;
    virtual void ReleaseMediaReservation() = 0;
    // Gives up the program's exclusive access taken for an erase or a burn.
    virtual void ReleaseExclusiveAccess() = 0;

    // Starts an erase or a burn; false when it could not be started. Progress and the end are
    // seen through OperationStatus.
    virtual bool StartErase(bool complete) = 0;
    virtual bool StartAudioBurn(const std::vector<LDiscAudioTrack>& layout,
                                const LDiscBurnOptions& options) = 0;
    virtual LDiscOperationStatus OperationStatus() = 0;
    // Asks a running erase or burn to end; it ends with state Failed.
    virtual void CancelOperation() = 0;
};

using LDiscDeviceRef = std::shared_ptr<LDiscDevice>;

// The program's list of drives, in one fixed order: every index ("CDDrive") means the same drive
// everywhere.
class LDiscService {
public:
    virtual ~LDiscService() = default;
    virtual std::vector<LDiscDeviceRef> CopyDeviceArray() = 0;
    // Calls `changed` (on any thread) whenever a drive's disc or tray may have changed, until the
    // returned handle goes.
    virtual std::shared_ptr<void> WatchDeviceChanges(std::function<void()> changed) = 0;
};

// The service the program uses: the one installed at start-up, or an empty list.
LDiscService& DiscService();
// Installs the service (null: back to the empty list). Not for use while a job runs.
void SetDiscService(std::shared_ptr<LDiscService> service);

// The drive at an index of the list; null when there is none.
LDiscDeviceRef CopyDeviceByIndex(unsigned index);
