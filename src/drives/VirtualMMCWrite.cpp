// The virtual MMC drive's recording: writing and reading blocks, reserving and closing tracks
// and sessions, blanking and formatting, speeds.
#include "drives/VirtualMMCDrive.h"

#include "disc/SCSIBytes.h"
#include "disc/SCSICDB.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace {

using State = LVirtualDisc::State;
using Status = LVirtualDisc::Status;

constexpr LSenseBytes kGood{0, 0, 0};
constexpr LSenseBytes kWriteError{3, 0x0C, 0x00};
constexpr LSenseBytes kInvalidOpcode{5, 0x20, 0x00};
constexpr LSenseBytes kOutOfRange{5, 0x21, 0x00};
constexpr LSenseBytes kInvalidWriteAddress{5, 0x21, 0x02};
constexpr LSenseBytes kInvalidField{5, 0x24, 0x00};
constexpr LSenseBytes kInvalidParameter{5, 0x26, 0x00};
constexpr LSenseBytes kSequenceError{5, 0x2C, 0x00};
constexpr LSenseBytes kCannotWriteFormat{5, 0x30, 0x05};
constexpr LSenseBytes kIllegalMode{5, 0x64, 0x00};
constexpr LSenseBytes kNoMoreReservations{5, 0x72, 0x05};
constexpr uint32_t kBlockLength = 2048;
constexpr uint32_t kBufferBlocks = 1024;
constexpr uint8_t kFormatting = 0x04;
constexpr uint8_t kInProgress = 0x07;
// Answers for which a blank or format, and a closing of a slow drive, report "in progress". The
// command layer asks again by itself every half second for two seconds before its wait sees the
// progress, so an erase lasts a few seconds of such polling.
constexpr int kErasePolls = 12;
constexpr int kClosePolls = 2;

// Closes the open track: a reserved track keeps its reserved size (the drive pads it), one
// written without reservation ends at the last block written.
void CloseTrack(State& state) {
    if (!state.trackOpen) return;
    const uint32_t size = state.trackReserved ? state.trackReserved : state.used - state.trackStart;
    if (size) state.tracks.push_back({state.trackStart, size, state.sessions + 1});
    state.used = state.trackStart + size;
    state.trackOpen = false;
    state.trackReserved = 0;
}

// Whether the session being recorded holds a track.
bool SessionHasTracks(const State& state) {
    return state.tracks.size() >= state.sessionFirstTrack;
}

// Closes the session, leaving the disc open for another one.
void CloseSession(State& state) {
    ++state.sessions;
    state.sessionFirstTrack = uint32_t(state.tracks.size()) + 1;
    state.status = Status::Incomplete;
}

// Closes what is open and marks the disc finalised: nothing can be added.
void Finalise(State& state) {
    if (SessionHasTracks(state)) ++state.sessions;
    const uint32_t last = state.tracks.back().session;
    uint32_t first = uint32_t(state.tracks.size());
    while (first > 1 && state.tracks[first - 2].session == last) --first;
    state.sessionFirstTrack = first;
    state.status = Status::Complete;
}

} // namespace

LVirtualMMCDrive::Sense LVirtualMMCDrive::Write(Call& call) {
    const LVirtualBurnerOptions& options = disc_->Options();
    const bool twelve = call.cdb[0] == MMC_WRITE_12;
    if (twelve && options.noWrite12) return kInvalidOpcode;
    if (twelve && (call.cdb[10] & 0x80) && options.noStreaming) return kInvalidField;
    const uint32_t first = MMCGet32(call.cdb + 2);
    const uint32_t count = twelve ? MMCGet32(call.cdb + 6) : MMCGet16(call.cdb + 7);
    const size_t bytes = size_t{count} * kBlockLength;
    const uint8_t* data = Sent(call, bytes);
    if (!data) return kInvalidField;
    if (count == 0) return kGood;

    State& state = call.state;
    const uint64_t end = uint64_t{first} + count;
    const bool sequential = Sequential(state.media);
    if (sequential) {
        if (state.status == Status::Complete) return kInvalidWriteAddress;
        const uint8_t writeType = writePage_[2] & 0x0F;
        const uint8_t blockType = writePage_[4] & 0x0F;
        // CDs are written here track-at-once (or in packets) in 2048-byte Mode 1 or Mode 2
        // form 1 blocks; session-at-once would need a cue sheet first.
        if (IsCD(state.media) && (writeType == 2 || writeType == 3)) return kSequenceError;
        if (IsCD(state.media) && blockType != 8 && blockType != 10) return kIllegalMode;
        const bool reserved = state.trackOpen && state.trackReserved;
        // A DVD-R/RW written at once must have its track reserved.
        if (IsDVDMinus(state.media) && writeType == 2 && !reserved) return kSequenceError;
        const uint64_t limit = reserved ? state.trackStart + state.trackReserved : state.capacity;
        if (first != state.used) return kInvalidWriteAddress;
        if (end > limit) return kOutOfRange;
    } else if (end > state.capacity) {
        return kOutOfRange;
    }
    const int64_t failAt = disc_->WriteErrorBlock();
    if (failAt >= int64_t{first} && failAt < int64_t(end)) return kWriteError;
    if (options.slowMs) std::this_thread::sleep_for(std::chrono::milliseconds(options.slowMs));
    if (DataFile(true) < 0) return kWriteError;
    const bool followsOn = first == bufferFirst_ + bufferBlocks_;
    if (bufferBlocks_ && (!followsOn || bufferBlocks_ + count > kBufferBlocks) && !FlushBuffer())
        return kWriteError;
    if (count > kBufferBlocks) {
        if (pwrite(fd_, data, bytes, off_t(first) * kBlockLength) != ssize_t(bytes))
            return kWriteError;
    } else {
        if (buffer_.empty()) buffer_.resize(size_t{kBufferBlocks} * kBlockLength);
        if (bufferBlocks_ == 0) bufferFirst_ = first;
        std::memcpy(buffer_.data() + size_t{bufferBlocks_} * kBlockLength, data, bytes);
        bufferBlocks_ += count;
        if (bufferBlocks_ == kBufferBlocks && !FlushBuffer()) return kWriteError;
    }

    // The first write opens a track and makes the disc incomplete (a rewritable starts its
    // background format): saved at once. Later blocks are saved when the cache is flushed.
    bool changed = false;
    if (sequential) {
        changed = !state.trackOpen || state.status != Status::Incomplete;
        if (!state.trackOpen) {
            state.trackOpen = true;
            state.trackStart = first;
            state.trackReserved = 0;
        }
        state.status = Status::Incomplete;
        state.used = uint32_t(end);
    } else {
        changed = state.format == LVirtualFormat::None || state.status != Status::Complete;
        if (state.format == LVirtualFormat::None) state.format = LVirtualFormat::Started;
        state.status = Status::Complete;
        state.used = std::max(state.used, uint32_t(end));
    }
    Save(state, changed);
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::Read(Call& call) {
    const State& state = call.state;
    const uint32_t first = MMCGet32(call.cdb + 2);
    const uint32_t count = MMCGet16(call.cdb + 7);
    const size_t bytes = size_t{count} * kBlockLength;
    const LSCSICommand& command = *call.command;
    if (command.direction != LSCSIDirection::FromDevice || !command.buffer || command.length < bytes)
        return kInvalidField;
    // What can be read: the recorded blocks, or the whole of a formatted rewritable.
    const bool formatted = !Sequential(state.media) && state.format != LVirtualFormat::None;
    const uint64_t readable = formatted ? state.capacity : state.used;
    if (uint64_t{first} + count > readable) return kOutOfRange;
    auto* out = static_cast<uint8_t*>(command.buffer);
    size_t got = 0;
    const int fd = DataFile(false);
    while (fd >= 0 && got < bytes) {
        const ssize_t n = pread(fd, out + got, bytes - got, off_t(first) * kBlockLength + off_t(got));
        if (n <= 0) break;
        got += size_t(n);
    }
    std::memset(out + got, 0, bytes - got);
    const int64_t corrupt = disc_->Options().verifyError;
    if (corrupt >= int64_t{first} && corrupt < int64_t{first} + count) {
        uint8_t* sector = out + size_t(corrupt - first) * kBlockLength;
        for (uint32_t i = 0; i < kBlockLength; ++i) sector[i] ^= 0xFF;
    }
    call.result->transferred = bytes;
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::SynchronizeCache(Call& call) {
    // What a drive's cache holds goes onto the disc: here the written blocks onto the file's
    // storage, and the layout into the state file.
    if (fd_ >= 0 && fdWritable_ && fdatasync(fd_) != 0) return kWriteError;
    Save(call.state, true);
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::ReserveTrack(Call& call) {
    State& state = call.state;
    if (!Sequential(state.media) || state.trackOpen) return kSequenceError;
    if (state.status == Status::Complete) return kNoMoreReservations;
    if (call.cdb[1] & 0x01) return kInvalidField; // reserving by address is not offered
    const uint32_t unit = IsBluRay(state.media) ? 32 : IsCD(state.media) ? 1 : 16;
    const uint64_t size = (uint64_t{MMCGet32(call.cdb + 5)} + unit - 1) / unit * unit;
    if (size == 0 || state.used + size > state.capacity) return kInvalidField;
    state.trackOpen = true;
    state.trackStart = state.used;
    state.trackReserved = uint32_t(size);
    state.status = Status::Incomplete;
    Save(state, true);
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::CloseTrackSession(Call& call) {
    State& state = call.state;
    const uint8_t function = call.cdb[2] & 0x07;
    if (!Sequential(state.media)) {
        // Closing a DVD+RW or BD-RE ends its background format; tracks and sessions it has not.
        if (function == 0 || function == 3) {
            if (state.format == LVirtualFormat::Started) {
                state.format = LVirtualFormat::Complete;
                Save(state, true);
                StartClose();
            }
            return kGood;
        }
        return function == 1 || function == 2 ? kGood : kInvalidField;
    }
    if (state.status == Status::Complete) return kSequenceError;
    const bool plus = state.media == LDiscMediaKind::DVDPlusR || state.media == LDiscMediaKind::BDR;
    const bool multiSession = writePage_[3] >> 6;
    switch (function) {
    case 1:
        CloseTrack(state);
        Save(state, true);
        return kGood;
    case 2:
        CloseTrack(state);
        if (!SessionHasTracks(state)) return kSequenceError;
        // A CD or DVD-R/RW closes for good unless the write parameters ask for another session.
        if (plus || multiSession) CloseSession(state);
        else Finalise(state);
        break;
    case 3: // DVD-R/RW: finalise
    case 5: // DVD+R, BD-R: finalise (the first with minimal radius)
    case 6:
        if ((function == 3) != IsDVDMinus(state.media) || (function != 3 && !plus))
            return kInvalidField;
        CloseTrack(state);
        if (state.tracks.empty()) return kSequenceError;
        Finalise(state);
        break;
    default:
        return kInvalidField;
    }
    Save(state, true);
    StartClose();
    return kGood;
}

void LVirtualMMCDrive::StartClose() {
    // The file holds every block already, so the close has nothing left to do; a drive set to
    // be slow takes its time over it like a real one finishing the lead-out.
    if (disc_->Options().slowMs) Start(kInProgress, kClosePolls);
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::Blank(Call& call) {
    State& state = call.state;
    if (state.media != LDiscMediaKind::CDRW && state.media != LDiscMediaKind::DVDRW)
        return kCannotWriteFormat;
    const uint8_t type = call.cdb[1] & 0x07;
    if (type == 0 || type == 1) {
        disc_->EraseContent();
        unsaved_ = false;
        Start(kInProgress, kErasePolls);
        return kGood;
    }
    if (type != 5) return kInvalidField;
    // Reopening the last session: the disc is appendable again, its tracks stay.
    if (state.status != Status::Complete || state.sessions == 0) return kSequenceError;
    --state.sessions;
    state.status = Status::Incomplete;
    Save(state, true);
    Start(kInProgress, kClosePolls);
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::FormatUnit(Call& call) {
    const LDiscMediaKind media = call.state.media;
    if (Sequential(media)) return kCannotWriteFormat;
    if (!(call.cdb[1] & 0x10)) return kInvalidField;
    const uint8_t* list = Sent(call, 12);
    if (!list) return kInvalidField;
    const uint32_t blocks = MMCGet32(list + 4);
    const uint8_t type = list[8] >> 2;
    const bool offered = media == LDiscMediaKind::DVDPlusRW ? type == 0x26 : type == 0x00 || type == 0x30;
    if (MMCGet16(list + 2) != 8 || !offered ||
        (blocks > call.state.capacity && blocks != 0xFFFFFFFF))
        return kInvalidParameter;
    disc_->EraseContent();
    LVirtualDisc::State state = disc_->GetState();
    state.format = LVirtualFormat::Started;
    Save(state, true);
    Start(kFormatting, kErasePolls);
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::SetSpeed(Call&) {
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::SetStreaming(Call& call) {
    constexpr size_t kDescriptorSize = 28;
    if (call.cdb[8] != 0) return kInvalidField; // only performance descriptors
    if (MMCGet16(call.cdb + 9) < kDescriptorSize || !Sent(call, kDescriptorSize)) return kInvalidField;
    return kGood;
}

bool LVirtualMMCDrive::FlushBuffer() {
    if (bufferBlocks_ == 0) return true;
    const size_t bytes = size_t{bufferBlocks_} * kBlockLength;
    bufferBlocks_ = 0;
    const int fd = DataFile(true);
    return fd >= 0 && pwrite(fd, buffer_.data(), bytes, off_t(bufferFirst_) * kBlockLength) ==
                          ssize_t(bytes);
}

int LVirtualMMCDrive::DataFile(bool write) {
    if (fd_ >= 0 && (fdWritable_ || !write)) return fd_;
    const std::string& path = disc_->Path();
    const int fd = write ? open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644)
                         : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return -1;
    if (fd_ >= 0) close(fd_);
    fd_ = fd;
    fdWritable_ = write;
    return fd_;
}
