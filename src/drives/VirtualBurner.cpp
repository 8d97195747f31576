#include "drives/VirtualBurner.h"

#include "platform/AtomicFile.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <vector>

namespace {

// Blocks the drive receives with one write.
constexpr uint32_t kWriteBlocks = 16;

std::string CueText(const std::string& text) {
    std::string quoted;
    for (char c : text) quoted += c == '"' ? '\'' : c;
    return quoted;
}

} // namespace

LVirtualBurner::LVirtualBurner(std::shared_ptr<LVirtualDisc> disc) : disc_(std::move(disc)) {}

LVirtualBurner::~LVirtualBurner() {
    CancelOperation();
    if (worker_.joinable()) worker_.join();
}

LDiscDeviceInfo LVirtualBurner::CopyInfo() {
    LDiscDeviceInfo info;
    info.vendor = "Vinora";
    info.product = "Virtual Burner";
    info.canWriteCD = info.canWriteCDSAO = info.canWriteDVD = info.canWriteDVDPlusR = true;
    return info;
}

LDiscDeviceStatus LVirtualBurner::CopyStatus() {
    LDiscDeviceStatus status;
    if (disc_->TakeNotReady()) {
        status.inTransition = true;
        return status;
    }
    if (!disc_->Present()) return status;
    const LDiscMediaKind kind = disc_->Media();
    const LVirtualDisc::Status discStatus = disc_->DiscStatus();
    status.mediaPresent = true;
    status.kind = kind;
    status.blank = discStatus == LVirtualDisc::Status::Blank;
    status.appendable = discStatus != LVirtualDisc::Status::Complete;
    status.erasable = disc_->Erasable();
    status.usedBlocks = disc_->UsedBlocks();
    status.freeBlocks = disc_->FreeBlocks();
    // The speeds of a common burner, in kilobytes per second (1x = 176.4 for CDs).
    const bool cd = kind == LDiscMediaKind::CDR || kind == LDiscMediaKind::CDRW;
    const double unit = cd ? 176.4 : 1385.0;
    for (int x : cd ? std::vector<int>{4, 8, 16, 24, 48} : std::vector<int>{2, 4, 8, 16})
        status.burnSpeeds.push_back(x * unit);
    status.maximumWriteSpeed = uint32_t(status.burnSpeeds.back());
    return status;
}

bool LVirtualBurner::EjectMedia() {
    disc_->SetTrayOpen(true);
    return true;
}

bool LVirtualBurner::CloseTray() {
    disc_->SetTrayOpen(false);
    return true;
}

bool LVirtualBurner::AcquireMediaReservation() {
    std::lock_guard lock(mutex_);
    ++reservations_;
    return true;
}

void LVirtualBurner::ReleaseMediaReservation() {
    std::lock_guard lock(mutex_);
    if (reservations_ > 0) --reservations_;
}

void LVirtualBurner::SetStatus(LDiscOperationState state, float fraction, int track) {
    std::lock_guard lock(mutex_);
    status_ = {state, fraction, track};
}

LDiscOperationStatus LVirtualBurner::OperationStatus() {
    std::lock_guard lock(mutex_);
    return status_;
}

void LVirtualBurner::CancelOperation() {
    cancel_ = true;
}

bool LVirtualBurner::Start(void (LVirtualBurner::*work)()) {
    {
        std::lock_guard lock(mutex_);
        const LDiscOperationState state = status_.state;
        if (state != LDiscOperationState::Idle && state != LDiscOperationState::Done &&
            state != LDiscOperationState::Failed)
            return false;
        status_ = {LDiscOperationState::Preparing, -1.0f, 0};
    }
    if (worker_.joinable()) worker_.join();
    cancel_ = false;
    worker_ = std::thread(work, this);
    return true;
}

bool LVirtualBurner::StartErase(bool complete) {
    if (!disc_->Present() || !disc_->Erasable()) return false;
    (void)complete; // a quick and a complete erase leave the same blank disc here
    return Start(&LVirtualBurner::EraseWork);
}

void LVirtualBurner::EraseWork() {
    SetStatus(LDiscOperationState::Erasing, -1.0f, 0);
    if (!SlowWrite()) {
        SetStatus(LDiscOperationState::Failed, -1.0f, 0);
        return;
    }
    disc_->EraseContent();
    SetStatus(LDiscOperationState::Done, 1.0f, 0);
}

bool LVirtualBurner::StartAudioBurn(const std::vector<LDiscAudioTrack>& layout,
                                    const LDiscBurnOptions& options) {
    if (!disc_->Present() || disc_->DiscStatus() != LVirtualDisc::Status::Blank || layout.empty())
        return false;
    layout_ = layout;
    options_ = options;
    return Start(&LVirtualBurner::BurnWork);
}

bool LVirtualBurner::SlowWrite() {
    const unsigned ms = disc_->Options().slowMs;
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (std::chrono::steady_clock::now() < until) {
        if (cancel_) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(std::min(ms, 10u)));
    }
    return !cancel_;
}

uint32_t LVirtualBurner::LayoutBlocks() const {
    uint32_t total = 0;
    for (const LDiscAudioTrack& track : layout_) total += track.lengthBlocks;
    return total;
}

void LVirtualBurner::BurnWork() {
    const uint32_t total = LayoutBlocks();
    SetStatus(LDiscOperationState::SessionOpen, -1.0f, 0);
    LAtomicFile bin(disc_->Path() + ".bin");
    LAtomicFile cue(disc_->Path() + ".cue");
    const std::string sheet = CueSheet();
    const bool written = total <= disc_->FreeBlocks() && bin.IsOpen() && cue.IsOpen() &&
                         WriteTracks(bin.File()) &&
                         cue.File().Write(sheet.data(), sheet.size());
    if (written) SetStatus(LDiscOperationState::SessionClose, -1.0f, 0);
    if (!written || !bin.Commit(kFileMode, false) || !cue.Commit(kFileMode, false)) {
        SetStatus(LDiscOperationState::Failed, -1.0f, 0);
        return;
    }
    disc_->Written(total, LVirtualDisc::Status::Complete);
    SetStatus(LDiscOperationState::Done, 1.0f, 0);
}

bool LVirtualBurner::WriteTracks(LFile& bin) {
    const uint32_t total = LayoutBlocks();
    std::vector<uint8_t> buffer(kWriteBlocks * kAudioBlockBytes);
    uint32_t block = 0;
    for (size_t index = 0; index < layout_.size(); ++index) {
        const LDiscAudioTrack& track = layout_[index];
        const int number = int(index) + 1;
        SetStatus(LDiscOperationState::Preparing, float(block) / float(total), number);
        if (track.producer->PreBurn() != 0) return false;
        bool ok = true;
        for (uint32_t done = 0; ok && done < track.lengthBlocks;) {
            const uint32_t blocks = std::min(kWriteBlocks, track.lengthBlocks - done);
            const uint32_t bytes = blocks * kAudioBlockBytes;
            uint32_t filled = 0;
            while (ok && filled < bytes) {
                uint32_t produced = 0;
                ok = track.producer->Produce(buffer.data() + filled, bytes - filled, produced) == 0;
                // A producer that runs dry leaves silence, as a drive pads a short track.
                if (ok && produced == 0) {
                    std::fill(buffer.begin() + filled, buffer.begin() + bytes, 0);
                    produced = bytes - filled;
                }
                filled += produced;
            }
            const int64_t failAt = disc_->WriteErrorBlock();
            ok = ok && !(failAt >= block && failAt < int64_t(block) + blocks) && SlowWrite() &&
                 bin.Write(buffer.data(), bytes);
            done += blocks;
            block += blocks;
            SetStatus(LDiscOperationState::TrackWrite, float(block) / float(total), number);
        }
        SetStatus(LDiscOperationState::TrackClose, float(block) / float(total), number);
        track.producer->PostBurn();
        if (!ok) return false;
    }
    return true;
}

std::string LVirtualBurner::CueSheet() const {
    std::string sheet =
        "FILE \"" + std::filesystem::path(disc_->Path() + ".bin").filename().string() +
        "\" BINARY\n";
    uint32_t block = 0;
    char line[64];
    for (size_t index = 0; index < layout_.size(); ++index) {
        std::snprintf(line, sizeof line, "  TRACK %02d AUDIO\n", int(index + 1));
        sheet += line;
        if (options_.cdText && !layout_[index].title.empty())
            sheet += "    TITLE \"" + CueText(layout_[index].title) + "\"\n";
        if (options_.cdText && !layout_[index].performer.empty())
            sheet += "    PERFORMER \"" + CueText(layout_[index].performer) + "\"\n";
        std::snprintf(line, sizeof line, "    INDEX 01 %02u:%02u:%02u\n", block / (75 * 60),
                      block / 75 % 60, block % 75);
        sheet += line;
        block += layout_[index].lengthBlocks;
    }
    return sheet;
}
