#pragma once

#include "tags/WaveTagRecord.h"

// The "cart" chunk body (AES46-2002): 2048 fixed bytes, then the tag text.
//   0 Version 4 "CARTVERSION" | 4.. Title, Artist, CutID, ClientID, Category,
//   Classification, OutCue (64 each) | 452 StartDate 10 | 462 StartTime 8 | 470 EndDate 10 |
//   480 EndTime 8 | 488 ProducerAppID 64 "ENCODEDBY" | 552 ProducerAppVersion 64 |
//   616 UserDef 64 | 680 LevelReference (signed 32 bits) | 684 + 8k post timer k+1: usage
//   (3 characters and a zero), value (32 bits) | 748 reserved 276 | 1024 URL 1024 |
//   2048 "TAGTEXT"
class CART : public LWaveTagRecord {
public:
    static constexpr std::size_t kFixedSize = 2048;
    static constexpr std::size_t kPostTimers = 8;

    CART() : LWaveTagRecord("cart", kFixedSize) {}

    void ToHashTable(LAudioTagData& tags) const override;
    // A store without "CARTVERSION" writes version "0101".
    void FromHashTable(const LAudioTagData& tags) override;
    const std::string& GetTagText() const { return text_; }

private:
    void TerminateFields() override;
};

// The record every cart read and write goes through; guarded by LAudioTagLock().
extern CART _cart;

// The post timer usages offered to the user; the usage code is the first 3 characters.
inline constexpr std::size_t kNumCartTimerTypes = 9;
extern const char* const _CARTTimerTypes[kNumCartTimerTypes];

// Category choices: the name shown, and the category codes it stands for.
struct LCartCategoryName {
    const char* name;
    const char* codes;
};
inline constexpr std::size_t kNumCategoryNames = 30;
extern const LCartCategoryName _CategoryNames[kNumCategoryNames];
