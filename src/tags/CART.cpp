#include "tags/CART.h"

#include "tags/AudioTagData.h"
#include "tags/HashTableFields.h"

#include <cstdlib>
#include <cstring>
#include <string>

CART _cart;

const char* const _CARTTimerTypes[kNumCartTimerTypes] = {
    "UNUSED",           "SEG <Segue Timer>", "AUD <Audio Boundary>", "INT <Introduction>",
    "OUT <Epilog>",     "SEC <Secondary>",   "TER <Tertiary>",       "MRK <Generic Marker>",
    "EOD <End of data>"};

const LCartCategoryName _CategoryNames[kNumCategoryNames] = {
    {"<All>", "ALL"},
    {"<Beds>", "BED, BEDS"},
    {"<Sound bits>", "BIT, BITS"},
    {"<Commercials>", "COM, COMM"},
    {"<Contents>", "CON, CONT"},
    {"<Daily play lists>", "DAY"},
    {"<Emergency broadcast>", "EB"},
    {"<Sound effects>", "EFX"},
    {"<Fillers>", "FIL, FILL"},
    {"<Station ID>", "ID"},
    {"<Intros>", "INT, INTR"},
    {"<Jingles>", "JIN, JING"},
    {"<Liners>", "LIN, LINE"},
    {"<Logos>", "LOG, LOGO"},
    {"<Magic Call>", "MAG, MAGI"},
    {"<Music>", "MUS, MUSC"},
    {"<Network Delay>", "NET, NETW"},
    {"<News>", "NEW, NEWS"},
    {"<Promos>", "PRO, PROM"},
    {"<Public service announcements>", "PSA"},
    {"<Segues>", "SEG"},
    {"<Shows>", "SHW, SHOW"},
    {"<Sound effects>", "SND"},
    {"<Spots>", "SPO, SPOT"},
    {"<Sports>", "SPR, SPRT"},
    {"<Stagers>", "STG, STAG"},
    {"<Announcer stack>", "STK, STAK"},
    {"<Sweeps>", "SWP, SWEP"},
    {"<Test tones>", "TST, TEST"},
    {"<Temporary>", "TMP, TEMP"},
};

namespace {

using Field = LWaveTagRecord::TextField;

constexpr Field kTexts[] = {
    {0, 4, "CARTVERSION"},       {4, 64, "TITLE"},
    {68, 64, "ARTIST"},          {132, 64, "CUTID"},
    {196, 64, "CLIENTID"},       {260, 64, "CATEGORY"},
    {324, 64, "CLASSIFICATION"}, {388, 64, "OUTCUE"},
    {452, 10, "STARTDATE"},      {462, 8, "STARTTIME"},
    {470, 10, "ENDDATE"},        {480, 8, "ENDTIME"},
    {488, 64, "ENCODEDBY"},      {552, 64, "PRODUCERAPPVERSION"},
    {616, 64, "USERDEF"},        {1024, 1024, "URL"},
};

constexpr std::size_t kLevelReference = 680;
constexpr std::size_t kPostTimer = 684;
constexpr std::size_t kPostTimerUsageSize = 4;
constexpr std::size_t kURLEnd = 2047;

std::string TimerTag(std::size_t index, const char* what) {
    return "POSTTIMER" + std::to_string(index + 1) + what;
}

} // namespace

void CART::TerminateFields() {
    for (std::size_t k = 0; k < kPostTimers; ++k)
        fixed_[kPostTimer + 8 * k + kPostTimerUsageSize - 1] = 0;
    fixed_[kURLEnd] = 0;
}

void CART::ToHashTable(LAudioTagData& tags) const {
    for (const Field& field : kTexts)
        TextToHashTable(tags, field);
    tags.SetTag("LEVELREFERENCE",
                std::to_string(static_cast<int32_t>(GetField32(kLevelReference))).c_str(), true);
    for (std::size_t k = 0; k < kPostTimers; ++k) {
        const std::string usage = TimerTag(k, "USAGE");
        TextToHashTable(tags, {kPostTimer + 8 * k, kPostTimerUsageSize, usage.c_str()});
        tags.SetTag(TimerTag(k, "VALUE").c_str(),
                    std::to_string(GetField32(kPostTimer + 8 * k + 4)).c_str(), true);
    }
    SetHashTableLongString(tags, "TAGTEXT", text_.data(), text_.size());
}

void CART::FromHashTable(const LAudioTagData& tags) {
    Clear();
    for (const Field& field : kTexts)
        TextFromHashTable(tags, field);
    if (!tags.HasParm("CARTVERSION")) std::memcpy(fixed_.data(), "0101", 4);
    SetField32(kLevelReference, static_cast<uint32_t>(
                                    std::strtol(tags.GetParm("LEVELREFERENCE", "0"), nullptr, 10)));
    for (std::size_t k = 0; k < kPostTimers; ++k) {
        const std::string usage = TimerTag(k, "USAGE");
        TextFromHashTable(tags, {kPostTimer + 8 * k, kPostTimerUsageSize, usage.c_str()});
        SetField32(kPostTimer + 8 * k + 4,
                   static_cast<uint32_t>(
                       std::strtoul(tags.GetParm(TimerTag(k, "VALUE").c_str(), "0"), nullptr, 10)));
    }
    TerminateFields();
    text_ = tags.GetParm("TAGTEXT", "");
}
