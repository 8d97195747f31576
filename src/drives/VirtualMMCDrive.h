#pragma once

#include "burn/BurnErrorCode.h"
#include "disc/SCSITransport.h"
#include "drives/VirtualDisc.h"

#include <cstdint>
#include <memory>
#include <vector>

// The Virtual Burner as an MMC drive: it answers the SCSI commands of the data disc job over the
// same LVirtualDisc the audio side uses, and keeps the disc's recording state the way a real
// drive does, so a command sequence that works here works on hardware:
//
// - sequential discs (CD-R/RW track-at-once, DVD-R/RW, DVD+R, BD-R) take writes only at the
//   next writable address, inside the reserved track or the free area; DVD-R/RW in
//   session-at-once mode only after RESERVE TRACK; nothing once the disc is finalised;
// - DVD+RW and BD-RE take writes anywhere in the disc and format themselves in the background
//   from the first write until closed (close function 0 or 3) or formatted;
// - blanking (CD-RW, DVD-RW) and formatting (DVD+RW, BD-RE) run "in the background": TEST UNIT
//   READY reports not ready (2/04/07, or 2/04/04 while formatting) with the progress in the
//   sense-key-specific bytes for a few polls, then the disc is blank and PATH emptied;
// - written 2048-byte blocks go into PATH at block × 2048, and READ(10) reads them back; like a
//   drive's buffer, a run of consecutive writes is held in memory (up to 2 MiB) and put into
//   PATH when it is full or when any other command comes, whose answer reports a failure to
//   put it there as 3/0C/00.
//
// The options of the setting inject faults: a WRITE covering `write-error` fails with 3/0C/00,
// a READ covering `verify-error` returns other bytes, `not-ready=N` makes the first N TEST UNIT
// READY after loading answer 2/04/01, `no-write12` refuses WRITE(12) (5/20/00), `no-streaming`
// its streaming bit (5/24/00), and `slow=MS` delays every WRITE and makes a close report
// "in progress" for a moment before it is done.
//
// Mode pages, the tray lock and a running blank or format belong to this drive object; the
// disc's state is saved in PATH.state after every step that changes the layout and when the
// drive is closed.
class LVirtualMMCDrive : public LSCSITransport {
public:
    explicit LVirtualMMCDrive(std::shared_ptr<LVirtualDisc> disc);
    ~LVirtualMMCDrive() override;
    LVirtualMMCDrive(const LVirtualMMCDrive&) = delete;
    LVirtualMMCDrive& operator=(const LVirtualMMCDrive&) = delete;

    bool Execute(const LSCSICommand& command, LSCSITaskResult& result) override;

    // INQUIRY's vendor and product: the drive list's "Vinora Virtual Burner".
    static constexpr const char* kVendor = "Vinora";
    static constexpr const char* kProduct = "Virtual Burner";

private:
    // One command being answered. `cdb` is the command block padded with zeros to 12 bytes.
    struct Call {
        uint8_t cdb[12] = {};
        const LSCSICommand* command = nullptr;
        LSCSITaskResult* result = nullptr;
        LVirtualDisc::State state;
    };
    // An answer: good (key 0) or a check condition with this sense.
    using Sense = LSenseBytes;
    using Handler = Sense (LVirtualMMCDrive::*)(Call&);

    // A blank, format or close that the drive reports "in progress" for a few answers after
    // accepting it (the disc has its new state at once).
    struct Operation {
        uint8_t qualifier = 0; // of 2/04/xx: 4 formatting, 7 operation in progress
        int polls = 0;         // answers left before it is done
        int total = 0;
    };

    static Handler HandlerOf(uint8_t opcode, bool& needsMedium);
    // Copies a reply into the caller's buffer, no more than the allocation length allows.
    static void Reply(Call& call, const std::vector<uint8_t>& bytes, size_t allocation);
    // The data a command sends; empty when it sends less than `size` bytes.
    static const uint8_t* Sent(const Call& call, size_t size);

    void Start(uint8_t qualifier, int polls);
    // A closing of a track, session or format: "in progress" for a while only on a slow drive.
    void StartClose();
    // Counts a poll of a running operation; false (with the not-ready sense) while it runs.
    bool PollOperation(Call& call);
    void Save(const LVirtualDisc::State& state, bool now);
    // Kinds of disc: written only at the next writable address; CD; Blu-ray; DVD-R or DVD-RW.
    static bool Sequential(LDiscMediaKind media);
    static bool IsCD(LDiscMediaKind media);
    static bool IsBluRay(LDiscMediaKind media);
    static bool IsDVDMinus(LDiscMediaKind media);
    // The MMC profile of the loaded disc; 0 for none.
    static uint16_t ProfileOf(const LVirtualDisc::State& state);
    // A Blu-ray writer when the setting loads a Blu-ray disc, else a DVD writer.
    bool BluRayDrive() const;

    // The drive and its tray (VirtualMMCDrive.cpp).
    Sense TestUnitReady(Call& call);
    Sense Inquiry(Call& call);
    Sense StartStopUnit(Call& call);
    Sense PreventAllowMediumRemoval(Call& call);
    Sense MechanismStatus(Call& call);

    // What the drive says about itself and the disc (VirtualMMCReplies.cpp).
    Sense ReadDiscInformation(Call& call);
    Sense ReadTrackInformation(Call& call);
    Sense ReadFormatCapacities(Call& call);
    Sense ReadTocPmaAtip(Call& call);
    Sense ReadDiscStructure(Call& call);
    Sense ReadCapacity(Call& call);
    Sense GetConfiguration(Call& call);
    Sense GetPerformance(Call& call);
    Sense ModeSense(Call& call);
    Sense ModeSelect(Call& call);

    // Recording, reading back and erasing (VirtualMMCWrite.cpp).
    Sense Write(Call& call);
    Sense Read(Call& call);
    Sense SynchronizeCache(Call& call);
    Sense ReserveTrack(Call& call);
    Sense CloseTrackSession(Call& call);
    Sense Blank(Call& call);
    Sense FormatUnit(Call& call);
    Sense SetSpeed(Call& call);
    Sense SetStreaming(Call& call);
    // The disc's data file, opened for writing when `write`; -1 when it cannot be.
    int DataFile(bool write);
    // Puts the buffered blocks into the data file; false when that fails.
    bool FlushBuffer();

    std::shared_ptr<LVirtualDisc> disc_;
    Operation operation_;
    bool preventRemoval_ = false;
    bool unsaved_ = false;
    int fd_ = -1;
    bool fdWritable_ = false;
    std::vector<uint8_t> writePage_;   // mode page 5 from its page code on
    std::vector<uint8_t> cachingPage_; // mode page 8
    std::vector<uint8_t> buffer_;      // blocks written and not yet in the data file
    uint32_t bufferFirst_ = 0;
    uint32_t bufferBlocks_ = 0;
};
