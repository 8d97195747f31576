// The virtual MMC drive: command dispatch, sense, the background operations, and the tray.
#include "drives/VirtualMMCDrive.h"

#include "disc/SCSIBytes.h"
#include "disc/SCSICDB.h"

#include <algorithm>
#include <cstring>
#include <unistd.h>

namespace {

constexpr LSenseBytes kGood{0, 0, 0};
constexpr LSenseBytes kInvalidOpcode{5, 0x20, 0x00};
constexpr LSenseBytes kRemovalPrevented{5, 0x53, 0x02};
constexpr uint8_t kSenseKeySpecificValid = 0x80;

void CheckCondition(LSCSITaskResult& result, LSenseBytes sense) {
    result.taskStatus = TASK_STATUS_CHECK_CONDITION;
    result.sense[0] = 0x70;
    result.sense[2] = sense.key;
    result.sense[7] = kSCSISenseSize - 8;
    result.sense[12] = sense.code;
    result.sense[13] = sense.qualifier;
}

} // namespace

LVirtualMMCDrive::LVirtualMMCDrive(std::shared_ptr<LVirtualDisc> disc) : disc_(std::move(disc)) {
    // A writer's defaults: under-run protection, data track, Mode 1 blocks, track-at-once for
    // CDs and incremental recording for DVD-R/RW.
    const uint8_t writeType = IsDVDMinus(disc_->Media()) ? 0x40 : 0x41;
    writePage_ = {0x05, 0x36, writeType, 0x04, 0x08};
    writePage_.resize(0x38);
    cachingPage_ = {0x08, 0x0A, 0x04};
    cachingPage_.resize(0x0C);
}

LVirtualMMCDrive::~LVirtualMMCDrive() {
    FlushBuffer();
    if (unsaved_) disc_->SetState(disc_->GetState(), true);
    if (fd_ >= 0) close(fd_);
}

LVirtualMMCDrive::Handler LVirtualMMCDrive::HandlerOf(uint8_t opcode, bool& needsMedium) {
    struct Entry {
        uint8_t opcode;
        Handler handler;
        bool needsMedium;
    };
    static constexpr Entry kTable[] = {
        {MMC_TEST_UNIT_READY, &LVirtualMMCDrive::TestUnitReady, true},
        {MMC_FORMAT_UNIT, &LVirtualMMCDrive::FormatUnit, true},
        {MMC_INQUIRY, &LVirtualMMCDrive::Inquiry, false},
        {MMC_START_STOP_UNIT, &LVirtualMMCDrive::StartStopUnit, false},
        {MMC_PREVENT_ALLOW_MEDIUM_REMOVAL, &LVirtualMMCDrive::PreventAllowMediumRemoval, false},
        {MMC_READ_FORMAT_CAPACITIES, &LVirtualMMCDrive::ReadFormatCapacities, false},
        {MMC_READ_CAPACITY, &LVirtualMMCDrive::ReadCapacity, true},
        {MMC_READ_10, &LVirtualMMCDrive::Read, true},
        {MMC_WRITE_10, &LVirtualMMCDrive::Write, true},
        {MMC_SYNCHRONIZE_CACHE, &LVirtualMMCDrive::SynchronizeCache, true},
        {MMC_READ_TOC_PMA_ATIP, &LVirtualMMCDrive::ReadTocPmaAtip, true},
        {MMC_GET_CONFIGURATION, &LVirtualMMCDrive::GetConfiguration, false},
        {MMC_READ_DISC_INFORMATION, &LVirtualMMCDrive::ReadDiscInformation, true},
        {MMC_READ_TRACK_INFORMATION, &LVirtualMMCDrive::ReadTrackInformation, true},
        {MMC_RESERVE_TRACK, &LVirtualMMCDrive::ReserveTrack, true},
        {MMC_MODE_SELECT_10, &LVirtualMMCDrive::ModeSelect, false},
        {MMC_MODE_SENSE_10, &LVirtualMMCDrive::ModeSense, false},
        {MMC_CLOSE_TRACK_SESSION, &LVirtualMMCDrive::CloseTrackSession, true},
        {MMC_BLANK, &LVirtualMMCDrive::Blank, true},
        {MMC_WRITE_12, &LVirtualMMCDrive::Write, true},
        {MMC_GET_PERFORMANCE, &LVirtualMMCDrive::GetPerformance, false},
        {MMC_READ_DISC_STRUCTURE, &LVirtualMMCDrive::ReadDiscStructure, true},
        {MMC_SET_STREAMING, &LVirtualMMCDrive::SetStreaming, false},
        {MMC_SET_CD_SPEED, &LVirtualMMCDrive::SetSpeed, false},
        {MMC_MECHANISM_STATUS, &LVirtualMMCDrive::MechanismStatus, false},
    };
    for (const Entry& entry : kTable) {
        if (entry.opcode == opcode) {
            needsMedium = entry.needsMedium;
            return entry.handler;
        }
    }
    return nullptr;
}

bool LVirtualMMCDrive::Execute(const LSCSICommand& command, LSCSITaskResult& result) {
    if (!command.cdb || command.cdbLength == 0) return false;
    result = {};
    result.serviceResponse = SERVICE_TASK_COMPLETE;
    Call call;
    std::memcpy(call.cdb, command.cdb, std::min(command.cdbLength, sizeof call.cdb));
    call.command = &command;
    call.result = &result;
    call.state = disc_->GetState();

    bool needsMedium = false;
    const Handler handler = HandlerOf(call.cdb[0], needsMedium);
    Sense sense = kInvalidOpcode;
    const bool writing = call.cdb[0] == MMC_WRITE_10 || call.cdb[0] == MMC_WRITE_12;
    if (!writing && !FlushBuffer()) {
        sense = {3, 0x0C, 0x00};
    } else if (handler) {
        const bool present = !call.state.trayOpen && call.state.media != LDiscMediaKind::None;
        if (needsMedium && !present)
            sense = {2, 0x3A, static_cast<uint8_t>(call.state.trayOpen ? 0x02 : 0x00)};
        else if (needsMedium && !PollOperation(call))
            return true;
        else
            sense = (this->*handler)(call);
    }
    if (sense.key) CheckCondition(result, sense);
    return true;
}

void LVirtualMMCDrive::Reply(Call& call, const std::vector<uint8_t>& bytes, size_t allocation) {
    const LSCSICommand& command = *call.command;
    if (command.direction != LSCSIDirection::FromDevice || !command.buffer) return;
    const size_t n = std::min({bytes.size(), allocation, command.length});
    std::memcpy(command.buffer, bytes.data(), n);
    call.result->transferred = n;
}

const uint8_t* LVirtualMMCDrive::Sent(const Call& call, size_t size) {
    const LSCSICommand& command = *call.command;
    if (command.direction != LSCSIDirection::ToDevice || !command.buffer || command.length < size)
        return nullptr;
    call.result->transferred = size;
    return static_cast<const uint8_t*>(command.buffer);
}

void LVirtualMMCDrive::Start(uint8_t qualifier, int polls) {
    operation_ = {qualifier, polls, polls};
}

bool LVirtualMMCDrive::PollOperation(Call& call) {
    if (operation_.polls == 0) return true;
    if (--operation_.polls == 0) return true;
    CheckCondition(*call.result, {2, 0x04, operation_.qualifier});
    const auto done = uint16_t(65536 * (operation_.total - operation_.polls) / operation_.total);
    call.result->sense[15] = kSenseKeySpecificValid;
    MMCPut16(call.result->sense + 16, done);
    return false;
}

void LVirtualMMCDrive::Save(const LVirtualDisc::State& state, bool now) {
    disc_->SetState(state, now);
    unsaved_ = !now;
}

bool LVirtualMMCDrive::Sequential(LDiscMediaKind media) {
    return media != LDiscMediaKind::DVDPlusRW && media != LDiscMediaKind::BDRE;
}

bool LVirtualMMCDrive::IsCD(LDiscMediaKind media) {
    return media == LDiscMediaKind::CDR || media == LDiscMediaKind::CDRW;
}

bool LVirtualMMCDrive::IsBluRay(LDiscMediaKind media) {
    return media == LDiscMediaKind::BDR || media == LDiscMediaKind::BDRE;
}

bool LVirtualMMCDrive::IsDVDMinus(LDiscMediaKind media) {
    return media == LDiscMediaKind::DVDR || media == LDiscMediaKind::DVDRW;
}

uint16_t LVirtualMMCDrive::ProfileOf(const LVirtualDisc::State& state) {
    if (state.trayOpen) return 0;
    switch (state.media) {
    case LDiscMediaKind::CDR: return 0x09;
    case LDiscMediaKind::CDRW: return 0x0A;
    case LDiscMediaKind::DVDR: return 0x11;
    case LDiscMediaKind::DVDRW: return 0x14;
    case LDiscMediaKind::DVDPlusRW: return 0x1A;
    case LDiscMediaKind::DVDPlusR: return 0x1B;
    case LDiscMediaKind::BDR: return 0x41;
    case LDiscMediaKind::BDRE: return 0x43;
    default: return 0;
    }
}

bool LVirtualMMCDrive::BluRayDrive() const {
    return IsBluRay(disc_->Options().media);
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::TestUnitReady(Call&) {
    if (disc_->TakeNotReady()) return {2, 0x04, 0x01};
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::Inquiry(Call& call) {
    std::vector<uint8_t> reply(36, ' ');
    reply[0] = 0x05; // a CD/DVD device
    reply[1] = 0x80; // removable medium
    reply[2] = 0x05;
    reply[3] = 0x02;
    reply[4] = 31;
    reply[5] = reply[6] = reply[7] = 0;
    std::memcpy(&reply[8], kVendor, std::strlen(kVendor));
    std::memcpy(&reply[16], kProduct, std::strlen(kProduct));
    std::memcpy(&reply[32], "1.0", 3);
    Reply(call, reply, call.cdb[4]);
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::StartStopUnit(Call& call) {
    const bool loadEject = call.cdb[4] & 0x02;
    const bool start = call.cdb[4] & 0x01;
    if (!loadEject) return kGood;
    if (!start) {
        if (preventRemoval_) return kRemovalPrevented;
        if (unsaved_) Save(call.state, true);
        disc_->SetTrayOpen(true);
        return kGood;
    }
    if (call.state.trayOpen) {
        disc_->SetTrayOpen(false);
        disc_->ArmNotReady();
    }
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::PreventAllowMediumRemoval(Call& call) {
    preventRemoval_ = call.cdb[4] & 0x01;
    return kGood;
}

LVirtualMMCDrive::Sense LVirtualMMCDrive::MechanismStatus(Call& call) {
    std::vector<uint8_t> reply(8, 0);
    if (call.state.trayOpen) reply[1] = 0x10; // door open
    Reply(call, reply, MMCGet16(call.cdb + 8));
    return kGood;
}
