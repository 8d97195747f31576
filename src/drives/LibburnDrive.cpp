#include "drives/LibburnDrive.h"

#include "drives/LibburnMapping.h"

#include <libburn/libburn.h>

#include <chrono>
#include <cstring>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace burn;

namespace {

// Never destroyed: drives held by static objects release themselves at exit under it.
std::mutex& LibburnMutex() {
    static std::mutex* mutex = new std::mutex;
    return *mutex;
}

bool LibburnStarted() {
    static const bool started = [] {
        if (!burn_initialize()) return false;
        // libburn's own messages would land on the terminal; errors reach the user through
        // the job's results instead.
        burn_msgs_set_severities(const_cast<char*>("NEVER"), const_cast<char*>("NEVER"),
                                 const_cast<char*>("vinora: "));
        return true;
    }();
    return started;
}

// A track's data for libburn: each read asks the producer for one whole block.
//
// libburn takes BURN_AUDIO tracks as 16-bit little-endian stereo samples (its header says so:
// big-endian data would burn as static), which is exactly what the producer delivers, so no
// byte swap is set on the track.
struct LProducerSource {
    LAudioTrackProducer* producer;
    off_t size;
    off_t delivered = 0;
    bool started = false;
    bool failed = false;

    ~LProducerSource() {
        if (started) producer->PostBurn();
    }
};

int ProducerRead(burn_source* source, unsigned char* buffer, int size) {
    auto* data = static_cast<LProducerSource*>(source->data);
    if (data->failed) return -1;
    if (data->delivered >= data->size) return 0;
    if (!data->started) {
        data->started = true;
        if (data->producer->PreBurn() != 0) {
            data->failed = true;
            return -1;
        }
    }
    int filled = 0;
    while (filled < size) {
        uint32_t produced = 0;
        if (data->producer->Produce(buffer + filled, uint32_t(size - filled), produced) != 0) {
            data->failed = true;
            return -1;
        }
        if (produced == 0) {
            std::memset(buffer + filled, 0, size_t(size - filled));
            produced = uint32_t(size - filled);
        }
        filled += int(produced);
    }
    data->delivered += filled;
    return filled;
}

off_t ProducerSize(burn_source* source) {
    return static_cast<LProducerSource*>(source->data)->size;
}

int ProducerSetSize(burn_source* source, off_t size) {
    static_cast<LProducerSource*>(source->data)->size = size;
    return 1;
}

void ProducerFree(burn_source* source) {
    delete static_cast<LProducerSource*>(source->data);
}

burn_source* NewProducerSource(const LDiscAudioTrack& track) {
    auto* source = static_cast<burn_source*>(std::calloc(1, sizeof(burn_source)));
    if (!source) return nullptr;
    source->refcount = 1;
    source->read = ProducerRead;
    source->get_size = ProducerSize;
    source->set_size = ProducerSetSize;
    source->free_data = ProducerFree;
    source->data = new LProducerSource{track.producer, off_t(track.lengthBlocks) * kAudioBlockBytes};
    return source;
}

void SetCDText(burn_track* track, int packType, const std::string& text) {
    if (text.empty()) return;
    std::vector<unsigned char> payload(text.begin(), text.end());
    payload.push_back(0);
    burn_track_set_cdtext(track, 0, packType, nullptr, payload.data(), int(payload.size()), 0);
}

} // namespace

std::unique_lock<std::mutex> LibburnLock() {
    return std::unique_lock(LibburnMutex());
}

std::vector<LDiscDeviceRef> ScanLibburnDrives() {
    auto lock = LibburnLock();
    std::vector<LDiscDeviceRef> drives;
    if (!LibburnStarted()) return drives;
    burn_drive_clear_whitelist();
    burn_drive_info* infos = nullptr;
    unsigned int count = 0;
    // The scan runs on a thread of libburn's that fills in `infos` and `count` when it ends: it
    // must be asked again until it says so, or it writes into this frame after it is gone.
    int scanned = 0;
    while ((scanned = burn_drive_scan(&infos, &count)) == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    if (scanned < 0 || !infos) return drives;
    for (unsigned int i = 0; i < count; ++i) {
        char address[BURN_DRIVE_ADR_LEN] = {};
        if (burn_drive_get_adr(&infos[i], address) <= 0) continue;
        drives.push_back(std::make_shared<LLibburnDrive>(address, MapLibburnInfo(infos[i])));
    }
    for (unsigned int i = 0; i < count; ++i) burn_drive_info_forget(&infos[i], 0);
    burn_drive_info_free(infos);
    return drives;
}

LLibburnDrive::LLibburnDrive(std::string address, LDiscDeviceInfo info)
    : address_(std::move(address)), info_(std::move(info)) {}

LLibburnDrive::~LLibburnDrive() {
    ReleaseExclusiveAccess();
}

burn_drive* LLibburnDrive::Grab() {
    if (grabbed_) return grabbed_->drive;
    std::vector<char> address(address_.begin(), address_.end());
    address.push_back(0);
    burn_drive_info* infos = nullptr;
    if (burn_drive_scan_and_grab(&infos, address.data(), 1) <= 0 || !infos) return nullptr;
    grabbed_ = infos;
    return grabbed_->drive;
}

void LLibburnDrive::Release(bool eject) {
    if (!grabbed_) return;
    burn_drive_release(grabbed_->drive, eject ? 1 : 0);
    burn_drive_info_free(grabbed_);
    grabbed_ = nullptr;
}

LDiscDeviceStatus LLibburnDrive::CopyStatus() {
    auto lock = LibburnLock();
    const bool wasGrabbed = grabbed_ != nullptr;
    burn_drive* drive = Grab();
    if (!drive) return {};
    LDiscDeviceStatus status;
    if (burn_drive_get_status(drive, nullptr) == BURN_DRIVE_IDLE) {
        int profile = 0;
        char name[80] = {};
        burn_disc_get_profile(drive, &profile, name);
        const burn_disc_status discStatus = burn_disc_get_status(drive);
        int start = 0;
        int end = 0;
        uint32_t capacity = 0;
        if (burn_disc_read_atip(drive) == 1 && burn_drive_get_start_end_lba(drive, &start, &end, 0) == 1)
            capacity = uint32_t(end - start);
        burn_write_opts* options = burn_write_opts_new(drive);
        const off_t free = burn_disc_available_space(drive, options);
        burn_write_opts_free(options);
        status = MapLibburnDisc(discStatus, profile, burn_disc_erasable(drive) == 1, free, capacity);
        burn_speed_descriptor* speeds = nullptr;
        if (burn_drive_get_speedlist(drive, &speeds) > 0) {
            status.burnSpeeds = MapLibburnSpeeds(speeds, profile);
            burn_drive_free_speedlist(&speeds);
        }
        const int fastest = burn_drive_get_write_speed(drive);
        status.maximumWriteSpeed = fastest > 0 ? uint32_t(fastest) : 0;
    } else {
        status.inTransition = true;
    }
    if (!wasGrabbed) Release(false);
    return status;
}

bool LLibburnDrive::IsValid() {
    auto lock = LibburnLock();
    if (grabbed_) return true;
    if (!Grab()) return false;
    Release(false);
    return true;
}

bool LLibburnDrive::EjectMedia() {
    auto lock = LibburnLock();
    if (!Grab()) return false;
    Release(true);
    return true;
}

bool LLibburnDrive::CloseTray() {
    auto lock = LibburnLock();
    // Grabbing with load set closes the tray.
    const bool wasGrabbed = grabbed_ != nullptr;
    if (!Grab()) return false;
    if (!wasGrabbed) Release(false);
    return true;
}

bool LLibburnDrive::AcquireMediaReservation() {
    auto lock = LibburnLock();
    // A grabbed drive keeps its tray locked; the count keeps ejects away meanwhile.
    if (!Grab()) return false;
    ++reservations_;
    return true;
}

void LLibburnDrive::ReleaseMediaReservation() {
    auto lock = LibburnLock();
    if (reservations_ > 0) --reservations_;
}

void LLibburnDrive::ReleaseExclusiveAccess() {
    auto lock = LibburnLock();
    if (grabbed_ && burn_drive_get_status(grabbed_->drive, nullptr) != BURN_DRIVE_IDLE) {
        // A drive still writing cannot be let go: stop it and wait until it is idle.
        burn_drive_cancel(grabbed_->drive);
        while (burn_drive_get_status(grabbed_->drive, nullptr) != BURN_DRIVE_IDLE) {
            lock.unlock();
            usleep(100000);
            lock.lock();
        }
    }
    FreeLayout();
    Release(false);
}

void LLibburnDrive::FreeLayout() {
    if (disc_) burn_disc_free(disc_);
    disc_ = nullptr;
    for (burn_source* source : sources_) burn_source_free(source);
    sources_.clear();
}

bool LLibburnDrive::StartErase(bool complete) {
    auto lock = LibburnLock();
    burn_drive* drive = Grab();
    if (!drive || burn_disc_erasable(drive) != 1) return false;
    erasing_ = true;
    burn_disc_erase(drive, complete ? 0 : 1);
    return true;
}

bool LLibburnDrive::StartAudioBurn(const std::vector<LDiscAudioTrack>& layout,
                                   const LDiscBurnOptions& options) {
    auto lock = LibburnLock();
    burn_drive* drive = Grab();
    if (!drive || layout.empty()) return false;
    FreeLayout();
    disc_ = burn_disc_create();
    burn_session* session = burn_session_create();
    burn_disc_add_session(disc_, session, BURN_POS_END);
    burn_session_free(session);
    for (const LDiscAudioTrack& entry : layout) {
        burn_source* source = NewProducerSource(entry);
        if (!source) return false;
        sources_.push_back(source);
        burn_track* track = burn_track_create();
        burn_track_define_data(track, 0, 0, 1, BURN_AUDIO);
        burn_track_set_source(track, source);
        if (options.cdText) {
            SetCDText(track, 0x80, entry.title);
            SetCDText(track, 0x81, entry.performer);
        }
        burn_session_add_track(session, track, BURN_POS_END);
        burn_track_free(track);
    }
    burn_write_opts* writeOptions = burn_write_opts_new(drive);
    burn_write_opts_set_write_type(writeOptions, BURN_WRITE_SAO, BURN_BLOCK_SAO);
    burn_write_opts_set_underrun_proof(writeOptions, 1);
    burn_write_opts_set_perform_opc(writeOptions, 0);
    char reasons[BURN_REASONS_LEN] = {};
    if (burn_precheck_write(writeOptions, disc_, reasons, 0) <= 0) {
        burn_write_opts_free(writeOptions);
        FreeLayout();
        return false;
    }
    // "Speed" is in whole "x" of the CD speed (176.4 kilobytes per second); 0 the fastest.
    burn_drive_set_speed(drive, 0, options.speed > 0 ? int(options.speed * 176.4 + 0.5) : 0);
    erasing_ = false;
    burn_disc_write(writeOptions, disc_);
    burn_write_opts_free(writeOptions);
    return true;
}

LDiscOperationStatus LLibburnDrive::OperationStatus() {
    auto lock = LibburnLock();
    if (!grabbed_) return {LDiscOperationState::Failed, -1.0f, 0};
    burn_progress progress {};
    const burn_drive_status status = burn_drive_get_status(grabbed_->drive, &progress);
    bool wroteWell = true;
    if (status == BURN_DRIVE_IDLE)
        wroteWell = erasing_ ? burn_disc_get_status(grabbed_->drive) == BURN_DISC_BLANK
                             : burn_drive_wrote_well(grabbed_->drive) == 1;
    return MapLibburnProgress(status, progress, erasing_, wroteWell);
}

void LLibburnDrive::CancelOperation() {
    auto lock = LibburnLock();
    if (grabbed_) burn_drive_cancel(grabbed_->drive);
}
