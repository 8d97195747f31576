#include "tags/BWF.h"

#include "tags/AudioTagData.h"
#include "tags/HashTableFields.h"

#include <cstdio>
#include <cstdlib>

BWF _bwf;

namespace {

using Field = LWaveTagRecord::TextField;

constexpr Field kDescription{0, 256, "COMMENT"};
constexpr Field kOriginator{256, 32, "ORIGINATOR"};
constexpr Field kReference{288, 32, "REFERENCE"};
constexpr Field kDate{320, 10, "DATE"};
constexpr Field kTime{330, 8, "TIME"};
constexpr Field kTexts[] = {kDescription, kOriginator, kReference, kDate, kTime};

constexpr std::size_t kTimeReferenceLow = 338;
constexpr std::size_t kTimeReferenceHigh = 342;
constexpr std::size_t kVersion = 346;
constexpr std::size_t kUMID = 348;
constexpr std::size_t kUMIDSize = 64;

uint32_t TagNumber(const LAudioTagData& tags, const char* name) {
    return static_cast<uint32_t>(std::strtoul(tags.GetParm(name, "0"), nullptr, 10));
}

} // namespace

void BWF::TerminateFields() {
    for (const Field& field : {kDescription, kOriginator, kReference})
        fixed_[field.offset + field.size - 1] = 0;
}

void BWF::ToHashTable(LAudioTagData& tags) const {
    for (const Field& field : kTexts)
        TextToHashTable(tags, field);
    tags.SetTag("TIMEREFLOW", std::to_string(GetField32(kTimeReferenceLow)).c_str(), true);
    tags.SetTag("TIMEREFHIGH", std::to_string(GetField32(kTimeReferenceHigh)).c_str(), true);
    char version[8];
    std::snprintf(version, sizeof(version), "%x", fixed_[kVersion] | (fixed_[kVersion + 1] << 8));
    tags.SetTag("BWFVERSION", version, true);
    std::string umid;
    for (std::size_t i = 0; i < kUMIDSize; ++i)
        umid += std::to_string(fixed_[kUMID + i]) + ",";
    tags.SetTag("UMID", umid.c_str(), true);
    SetHashTableLongString(tags, "CODINGHISTORY", text_.data(), text_.size());
}

void BWF::FromHashTable(const LAudioTagData& tags) {
    Clear();
    for (const Field& field : kTexts)
        TextFromHashTable(tags, field);
    TerminateFields();
    SetField32(kTimeReferenceLow, TagNumber(tags, "TIMEREFLOW"));
    SetField32(kTimeReferenceHigh, TagNumber(tags, "TIMEREFHIGH"));
    fixed_[kVersion] = 1;
    // "12,0,255,..." : up to 64 byte values.
    const char* umid = tags.GetParm("UMID", "");
    for (std::size_t i = 0; i < kUMIDSize && *umid; ++i) {
        char* end = nullptr;
        const unsigned long value = std::strtoul(umid, &end, 10);
        if (end == umid) break;
        fixed_[kUMID + i] = static_cast<uint8_t>(value);
        umid = *end == ',' ? end + 1 : end;
    }
    text_ = tags.GetParm("CODINGHISTORY", "");
}

void BWF::AddHistoryLine(const char* line) {
    if (!text_.empty() && text_.back() != '\n') text_ += "\r\n";
    text_ += line;
    text_ += "\r\n";
}
