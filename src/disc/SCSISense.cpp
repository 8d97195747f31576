#include "disc/SCSISense.h"

#include "disc/SCSIBytes.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

constexpr uint8_t kSenseKeySpecificValid = 0x80;
constexpr uint8_t kDescriptorSenseKeySpecific = 0x02;

// The sense-key-specific descriptor of descriptor-format sense, or null.
const uint8_t* FindSenseKeySpecific(const uint8_t* raw, size_t length) {
    size_t end = std::min(length, size_t{8} + (length > 7 ? raw[7] : 0));
    for (size_t at = 8; at + 2 <= end;) {
        const size_t size = size_t{2} + raw[at + 1];
        if (raw[at] == kDescriptorSenseKeySpecific && at + 7 <= end) return raw + at + 4;
        at += size;
    }
    return nullptr;
}

} // namespace

void LSCSIToFixedSense(const uint8_t* raw, size_t length, uint8_t (&fixed)[kSCSISenseSize]) {
    std::memset(fixed, 0, sizeof fixed);
    if (!raw || length == 0) return;
    const uint8_t responseCode = raw[0] & 0x7F;
    if (responseCode == 0x70 || responseCode == 0x71) {
        std::memcpy(fixed, raw, std::min(length, sizeof fixed));
        return;
    }
    if ((responseCode != 0x72 && responseCode != 0x73) || length < 4) return;
    fixed[0] = responseCode == 0x72 ? 0x70 : 0x71;
    fixed[2] = raw[1] & 0x0F;
    fixed[7] = kSCSISenseSize - 8;
    fixed[12] = raw[2];
    fixed[13] = raw[3];
    if (const uint8_t* specific = FindSenseKeySpecific(raw, length))
        std::memcpy(fixed + 15, specific, 3);
}

LSenseBytes LSCSISenseBytes(const uint8_t (&fixed)[kSCSISenseSize]) {
    return {static_cast<uint8_t>(fixed[2] & 0x0F), fixed[12], fixed[13]};
}

bool LSCSISenseProgress(const uint8_t (&fixed)[kSCSISenseSize], double& fraction) {
    if ((fixed[2] & 0x0F) != 2 || fixed[12] != 0x04 || !(fixed[15] & kSenseKeySpecificValid))
        return false;
    fraction = MMCGet16(fixed + 16) / 65536.0;
    return true;
}

std::string LSCSISenseText(LSenseBytes sense) {
    char text[16];
    std::snprintf(text, sizeof text, "%X/%02X/%02X", sense.key, sense.code, sense.qualifier);
    return text;
}
