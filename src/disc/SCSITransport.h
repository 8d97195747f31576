#pragma once

#include <cstddef>
#include <cstdint>

// The way one SCSI command reaches a drive: a command descriptor block of 6, 10 or 12 bytes,
// an optional data buffer moved in one direction, and a timeout. The SG_IO transport talks to
// a real drive; tests and the virtual drive answer the same calls themselves.

enum class LSCSIDirection {
    None,       // no data phase
    FromDevice, // the drive fills the buffer
    ToDevice,   // the buffer goes to the drive
};

// How the command ended at the transport level.
enum LSCSIServiceResponse : uint8_t {
    SERVICE_REQUEST_IN_PROCESS = 0,
    SERVICE_DELIVERY_OR_TARGET_FAILURE = 1,
    SERVICE_TASK_COMPLETE = 2,
    SERVICE_LINKED_COMMAND_COMPLETE = 3,
    SERVICE_FUNCTION_COMPLETE = 4,
    SERVICE_FUNCTION_REJECTED = 5,
};

// The drive's status byte of a completed task.
enum LSCSITaskStatus : uint8_t {
    TASK_STATUS_GOOD = 0,
    TASK_STATUS_CHECK_CONDITION = 2,
    TASK_STATUS_BUSY = 8,
};

// Fixed-format sense data: sense key at byte 2 (low nibble), ASC at 12, ASCQ at 13, the
// sense-key-specific bytes (progress of a long operation) at 15 to 17.
inline constexpr size_t kSCSISenseSize = 18;

struct LSCSICommand {
    const uint8_t* cdb = nullptr;
    size_t cdbLength = 0;
    void* buffer = nullptr;
    size_t length = 0;
    LSCSIDirection direction = LSCSIDirection::None;
    uint32_t timeoutMs = 0;
};

struct LSCSITaskResult {
    uint8_t serviceResponse = SERVICE_DELIVERY_OR_TARGET_FAILURE;
    uint8_t taskStatus = TASK_STATUS_GOOD;
    uint8_t sense[kSCSISenseSize] = {};
    // Bytes actually moved; less than the buffer's length when the drive sent a short reply.
    size_t transferred = 0;
};

class LSCSITransport {
public:
    virtual ~LSCSITransport() = default;
    // Runs one command to its end. False when the command could not be handed to the drive at
    // all (the device went away, the request was malformed); the result is then meaningless.
    virtual bool Execute(const LSCSICommand& command, LSCSITaskResult& result) = 0;
};
