#pragma once

// A drive that answers SCSI commands from a table: each entry matches an operation code (and,
// when given, the first bytes of the command block) and answers with reply data, or with a
// check condition and its sense, a number of times. Commands nobody scripted are refused as
// a drive refuses an unknown operation (5/20/00). Every command is recorded.

#include "burn/BurnErrorCode.h"
#include "disc/SCSI.h"
#include "disc/SCSIBytes.h"
#include "disc/SCSITransport.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

struct ScriptedAnswer {
    std::vector<uint8_t> cdbPrefix; // the first bytes of the command block, opcode first
    std::vector<uint8_t> data;      // sent back for a command that reads
    LSenseBytes sense;              // a non-zero key makes the answer a check condition
    int times = -1;                 // how often this entry answers; -1 for ever
    uint16_t progress = 0;          // with sense 2/04: the operation's progress, of 65536
    uint8_t serviceResponse = SERVICE_TASK_COMPLETE;
};

struct SentCommand {
    std::vector<uint8_t> cdb;
    std::vector<uint8_t> data; // what a writing command sent
    size_t length = 0;
    LSCSIDirection direction = LSCSIDirection::None;
    uint32_t timeoutMs = 0;
};

class ScriptedTransport : public LSCSITransport {
public:
    std::vector<ScriptedAnswer> script;
    std::vector<SentCommand> sent;

    bool Execute(const LSCSICommand& command, LSCSITaskResult& result) override {
        SentCommand record{std::vector<uint8_t>(command.cdb, command.cdb + command.cdbLength),
                           {}, command.length, command.direction, command.timeoutMs};
        if (command.direction == LSCSIDirection::ToDevice) {
            const auto* bytes = static_cast<const uint8_t*>(command.buffer);
            record.data.assign(bytes, bytes + command.length);
        }
        sent.push_back(record);
        result = {};
        result.serviceResponse = SERVICE_TASK_COMPLETE;
        ScriptedAnswer* answer = Find(record.cdb);
        if (!answer) {
            CheckCondition(result, {5, 0x20, 0x00}, 0);
            return true;
        }
        if (answer->times > 0) --answer->times;
        result.serviceResponse = answer->serviceResponse;
        if (answer->sense.key) {
            CheckCondition(result, answer->sense, answer->progress);
            return true;
        }
        if (command.direction == LSCSIDirection::FromDevice) {
            const size_t n = std::min(command.length, answer->data.size());
            std::memset(command.buffer, 0, command.length);
            if (n > 0) std::memcpy(command.buffer, answer->data.data(), n);
            result.transferred = n;
        } else {
            result.transferred = command.length;
        }
        return true;
    }

    // The operation codes sent, in order.
    std::vector<uint8_t> Opcodes() const {
        std::vector<uint8_t> codes;
        for (const SentCommand& command : sent) codes.push_back(command.cdb[0]);
        return codes;
    }

protected:
    ScriptedAnswer* Find(const std::vector<uint8_t>& cdb) {
        for (ScriptedAnswer& answer : script) {
            if (answer.times == 0 || answer.cdbPrefix.size() > cdb.size()) continue;
            if (std::equal(answer.cdbPrefix.begin(), answer.cdbPrefix.end(), cdb.begin()))
                return &answer;
        }
        return nullptr;
    }

    static void CheckCondition(LSCSITaskResult& result, LSenseBytes sense, uint16_t progress) {
        result.taskStatus = TASK_STATUS_CHECK_CONDITION;
        result.sense[0] = 0x70;
        result.sense[2] = sense.key;
        result.sense[7] = 10;
        result.sense[12] = sense.code;
        result.sense[13] = sense.qualifier;
        if (progress) {
            result.sense[15] = 0x80;
            result.sense[16] = static_cast<uint8_t>(progress >> 8);
            result.sense[17] = static_cast<uint8_t>(progress);
        }
    }
};

// An answer with reply data, or a refusal with a sense, for the command starting with `prefix`.
inline ScriptedAnswer Answer(std::vector<uint8_t> prefix, std::vector<uint8_t> data = {},
                             int times = -1) {
    return {std::move(prefix), std::move(data), {}, times};
}

inline ScriptedAnswer Refuse(std::vector<uint8_t> prefix, LSenseBytes sense, int times = -1) {
    return {std::move(prefix), {}, sense, times};
}

// Bytes from hexadecimal text, spaces ignored: "AA 00 10".
inline std::vector<uint8_t> Hex(const std::string& text) {
    std::vector<uint8_t> bytes;
    std::string digits;
    for (char c : text)
        if (c != ' ') digits += c;
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

// A GET CONFIGURATION reply with one feature descriptor.
inline std::vector<uint8_t> FeatureReply(uint16_t code, bool current, const std::string& data = "00 00 00 00") {
    const std::vector<uint8_t> bytes = Hex(data);
    std::vector<uint8_t> reply(12);
    MMCPut32(reply.data(), static_cast<uint32_t>(8 + bytes.size()));
    MMCPut16(&reply[8], code);
    reply[10] = current ? 0x01 : 0x00;
    reply[11] = static_cast<uint8_t>(bytes.size());
    reply.insert(reply.end(), bytes.begin(), bytes.end());
    return reply;
}

// A MODE SENSE(10) reply: the 8-byte header (with the medium type) and the page.
inline std::vector<uint8_t> ModeReply(const std::string& page, uint8_t mediumType = 0) {
    std::vector<uint8_t> reply(8);
    const std::vector<uint8_t> bytes = Hex(page);
    MMCPut16(reply.data(), static_cast<uint16_t>(6 + bytes.size()));
    reply[2] = mediumType;
    reply.insert(reply.end(), bytes.begin(), bytes.end());
    return reply;
}

// A device over a scripted drive; `drive` stays valid while the device lives.
struct ScriptedDevice {
    ScriptedDevice() {
        auto transport = std::make_unique<ScriptedTransport>();
        drive = transport.get();
        device.Open(std::move(transport));
    }
    LSCSI device;
    ScriptedTransport* drive;
};
