#pragma once

// A scripted drive with a disc in it: the sectors written land in memory and reads come back
// from there; the disc information follows the disc's state (blank, written, closed), and
// BLANK or FORMAT UNIT empty it. Every other command is answered from the script, so a test
// can refuse any of them. Faults: a sector whose write fails with 3/0C/00, a sector that reads
// back different.

#include "SCSIScriptedTransport.h"

#include "burn/BurnMediaTypes.h"
#include "disc/SCSICDB.h"
#include "disc/SCSIRecords.h"

#include <cstring>

#include <map>

struct DiscKind {
    const char* name;
    uint16_t profile;
    int media;
    bool erasable;
};

inline constexpr DiscKind kDiscKinds[] = {
    {"cd-r", 0x09, MEDIA_CDR, false},     {"cd-rw", 0x0A, MEDIA_CDRW, true},
    {"dvd-r", 0x11, MEDIA_DVDMR, false},  {"dvd-rw", 0x13, MEDIA_DVDMRW, true},
    {"dvd+r", 0x1B, MEDIA_DVDPR, false},  {"dvd+rw", 0x1A, MEDIA_DVDPRW, true},
    {"bd-r", 0x41, MEDIA_BDR, false},     {"bd-re", 0x43, MEDIA_BDRE, true},
    {"hd-dvd-ram", 0x52, MEDIA_HDDVDRAM, true},
};

class ScriptedDiscDrive : public ScriptedTransport {
public:
    ScriptedDiscDrive(const DiscKind& kind, uint32_t capacity) : kind_(kind), capacity_(capacity) {
        Rescript();
    }

    // Answers for everything a burn asks besides the disc's own state; tests put refusals in
    // front of them.
    void Rescript() {
        std::vector<uint8_t> profiles = Hex("00 00 00 10 00 00 00 00 00 00 03 04 00 00 01 00");
        MMCPut16(&profiles[6], kind_.profile);
        MMCPut16(&profiles[12], kind_.profile);
        // The current capacity (unformatted) and one full format of it.
        std::vector<uint8_t> capacities = Hex("00 00 00 10 00 00 00 00 01 00 08 00 00 00 00 00 00 00 08 00");
        MMCPut32(&capacities[4], capacity_);
        MMCPut32(&capacities[12], capacity_);
        script = {
            Answer(Hex("46 02 00 00"), profiles),
            Answer(Hex("46 02 00 2F"), FeatureReply(0x2F, true, "42 00 00 00")),
            Answer(Hex("46 02 00 2A"), FeatureReply(0x2A, true, "01 00 00 00")),
            Answer(Hex("46 02 00 2B"), FeatureReply(0x2B, true, "01 00 00 00")),
            Answer(Hex("46 02 00 41"), FeatureReply(0x41, true)),
            Answer({MMC_GET_CONFIGURATION}, Hex("00 00 00 08 00 00 00 00")),
            Answer(Hex("5A 08 2A"), ModeReply("2A 14 3F 03 00 00 00 00 1B 90 00 00 00 00 00 00 00 00 1B 90 1B 90")),
            Answer(Hex("5A 08 05"), ModeReply("05 36" + Zeros(54))),
            Answer(Hex("5A 08 08"), ModeReply("08 12" + Zeros(18))),
            Answer({MMC_GET_PERFORMANCE},
                   Hex("00 00 00 14 00 00 00 00 00 00 00 00 00 00 00 00 00 00 40 EC 00 00 2B 48")),
            Answer({MMC_READ_FORMAT_CAPACITIES}, capacities),
        };
        for (uint8_t opcode : {MMC_TEST_UNIT_READY, MMC_MODE_SELECT_10, MMC_SET_CD_SPEED,
                               MMC_SET_STREAMING, MMC_RESERVE_TRACK, MMC_SYNCHRONIZE_CACHE,
                               MMC_CLOSE_TRACK_SESSION, MMC_START_STOP_UNIT,
                               MMC_PREVENT_ALLOW_MEDIUM_REMOVAL, MMC_BLANK, MMC_FORMAT_UNIT,
                               MMC_READ_10, MMC_WRITE_10, MMC_WRITE_12,
                               MMC_READ_DISC_INFORMATION, MMC_READ_TRACK_INFORMATION})
            script.push_back(Answer({opcode}));
    }

    bool Execute(const LSCSICommand& command, LSCSITaskResult& result) override {
        const uint8_t opcode = command.cdb[0];
        const bool write = opcode == MMC_WRITE_10 || opcode == MMC_WRITE_12;
        const uint32_t sector = MMCGet32(command.cdb + 2);
        const uint32_t count = static_cast<uint32_t>(command.length / 2048);
        if (write && writeError >= 0 && writeError >= int64_t{sector} && writeError < int64_t{sector} + count) {
            sent.push_back({std::vector<uint8_t>(command.cdb, command.cdb + command.cdbLength), {}});
            result = {};
            result.serviceResponse = SERVICE_TASK_COMPLETE;
            CheckCondition(result, {3, 0x0C, 0x00}, 0);
            return true;
        }
        ScriptedTransport::Execute(command, result);
        if (result.taskStatus != TASK_STATUS_GOOD) return true;
        auto* bytes = static_cast<uint8_t*>(command.buffer);
        switch (opcode) {
        case MMC_WRITE_10:
        case MMC_WRITE_12:
            for (uint32_t i = 0; i < count; ++i)
                sectors[sector + i].assign(bytes + size_t{i} * 2048, bytes + size_t{i + 1} * 2048);
            written = true;
            break;
        case MMC_READ_10:
            for (uint32_t i = 0; i < count; ++i) {
                const auto found = sectors.find(sector + i);
                if (found != sectors.end()) std::memcpy(bytes + size_t{i} * 2048, found->second.data(), 2048);
                if (int64_t{sector + i} == verifyError) bytes[size_t{i} * 2048] ^= 0xFF;
            }
            break;
        case MMC_BLANK:
        case MMC_FORMAT_UNIT:
            sectors.clear();
            used = false;
            break;
        case MMC_CLOSE_TRACK_SESSION:
            closed = true;
            break;
        case MMC_READ_DISC_INFORMATION:
            DiscInformation(bytes, command.length);
            break;
        case MMC_READ_TRACK_INFORMATION:
            TrackInformation(bytes, command.length);
            break;
        default:
            break;
        }
        return true;
    }

    // The disc as an image: sectors 0 to `count` - 1, unwritten ones as zeros.
    std::vector<uint8_t> Image(uint32_t count) const {
        std::vector<uint8_t> image(size_t{count} * 2048);
        for (const auto& [sector, data] : sectors)
            if (sector < count) std::memcpy(&image[size_t{sector} * 2048], data.data(), 2048);
        return image;
    }

    std::map<uint32_t, std::vector<uint8_t>> sectors;
    bool used = false; // the disc holds an earlier burn
    bool written = false;
    bool closed = false;
    int64_t writeError = -1;
    int64_t verifyError = -1;
    uint8_t trackMode = 0x04; // the last track's mode: data

private:
    static std::string Zeros(size_t count) {
        std::string text;
        while (count--) text += " 00";
        return text;
    }

    void DiscInformation(uint8_t* bytes, size_t length) {
        std::vector<uint8_t> info(34);
        info[1] = 32;
        const bool blank = !used && !written;
        info[2] = static_cast<uint8_t>((kind_.erasable ? 0x10 : 0) |
                                       (blank ? DISC_EMPTY : closed || used ? DISC_COMPLETE : DISC_INCOMPLETE));
        info[3] = info[4] = info[5] = info[6] = 1; // first track, one session, its tracks 1 to 1
        // A CD's last possible lead-out as minutes, seconds and frames; a sector elsewhere.
        if (kind_.media == MEDIA_CDR || kind_.media == MEDIA_CDRW) {
            info[21] = static_cast<uint8_t>(capacity_ / 4500);
            info[22] = static_cast<uint8_t>(capacity_ / 75 % 60);
            info[23] = static_cast<uint8_t>(capacity_ % 75);
        } else {
            MMCPut32(&info[16], 0x30000);
            MMCPut32(&info[20], 0x30000 + capacity_);
        }
        std::memcpy(bytes, info.data(), std::min(length, info.size()));
    }

    void TrackInformation(uint8_t* bytes, size_t length) {
        std::vector<uint8_t> track(36);
        track[1] = 34;
        track[2] = 1;
        track[5] = trackMode;
        track[7] = 0x01; // the next writable address is valid: the disc's start
        MMCPut32(&track[16], capacity_);
        std::memcpy(bytes, track.data(), std::min(length, track.size()));
    }

    DiscKind kind_;
    uint32_t capacity_;
};

// A device over a scripted disc drive; `drive` stays valid while the device lives.
struct ScriptedDiscDevice {
    ScriptedDiscDevice(const DiscKind& kind, uint32_t capacity) {
        auto transport = std::make_unique<ScriptedDiscDrive>(kind, capacity);
        drive = transport.get();
        device.Open(std::move(transport));
    }
    LSCSI device;
    ScriptedDiscDrive* drive;
};
