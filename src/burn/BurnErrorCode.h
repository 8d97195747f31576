#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>

// The outcome of a burn or image step: a code with its fixed message, an optional detail text
// (a file name, a step name) and the drive's sense bytes of the failing command.
using BurnErrorCodeValue = uint32_t;

// The message of a code; "Unknown error" above 46. Never null.
const char* GetBurnErrorMessage(const BurnErrorCodeValue& code);

// The SCSI sense of a failed drive command; all 0 when the command did not fail.
struct LSenseBytes {
    uint8_t key = 0;
    uint8_t code = 0;
    uint8_t qualifier = 0;
};

struct BurnErrorCodeData {
    static constexpr size_t kTextSize = 520;

    BurnErrorCodeData() = default;
    // The text is cut to 519 bytes.
    BurnErrorCodeData(BurnErrorCodeValue code, const char* text, LSenseBytes sense = {});

    BurnErrorCodeValue code = 0;
    char text[kTextSize] = {};
    uint8_t senseKey = 0;
    uint8_t additionalSenseCode = 0;
    uint8_t additionalSenseCodeQualifier = 0;
};

// A main record and a chain of further information, newest first. Copies are deep.
class BurnErrorCode : public BurnErrorCodeData {
public:
    BurnErrorCode() = default;
    explicit BurnErrorCode(BurnErrorCodeValue code, const char* text = nullptr,
                           LSenseBytes sense = {})
        : BurnErrorCodeData(code, text, sense) {}

    // Puts a further record at the head of the chain.
    void AddInformation(BurnErrorCodeValue code, const char* text = nullptr, LSenseBytes sense = {});
    const std::list<BurnErrorCodeData>& Chain() const { return chain_; }
    const char* GetMessage() const { return GetBurnErrorMessage(code); }
    // For the user: the newest record's message, then ": " and its detail when it has one.
    std::string Describe() const;

private:
    std::list<BurnErrorCodeData> chain_;
};
