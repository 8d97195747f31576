#pragma once

#include "tags/WaveTagRecord.h"

// The Broadcast Wave "bext" chunk body (version 1 layout): 602 fixed bytes, then the coding
// history.
//   0 Description 256 "COMMENT"        | 256 Originator 32 "ORIGINATOR"
//   288 OriginatorReference 32 "REFERENCE" | 320 OriginationDate 10 "DATE"
//   330 OriginationTime 8 "TIME"       | 338 TimeReferenceLow "TIMEREFLOW"
//   342 TimeReferenceHigh "TIMEREFHIGH" | 346 Version (16 bits) "BWFVERSION", hexadecimal
//   348 UMID 64 bytes "UMID" as "%d," each | 412 reserved 190 | 602 "CODINGHISTORY"
class BWF : public LWaveTagRecord {
public:
    static constexpr std::size_t kFixedSize = 602;

    BWF() : LWaveTagRecord("bext", kFixedSize) {}

    void ToHashTable(LAudioTagData& tags) const override;
    // Version 1 whatever the store says.
    void FromHashTable(const LAudioTagData& tags) override;
    // Appends a line and "\r\n" to the coding history (after a line end of its own when the
    // history does not end with one).
    void AddHistoryLine(const char* line);
    const std::string& GetCodingHistory() const { return text_; }

private:
    void TerminateFields() override;
};

// The record every bext read and write goes through; guarded by LAudioTagLock().
extern BWF _bwf;
