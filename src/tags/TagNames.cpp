#include "tags/TagNames.h"

#include <strings.h>

const char* const _arStandardTags[kNumStandardTags] = {
    "IMAGE",   "TITLE",     "ARTIST",    "ALBUM",    "TRACKNUMBER", "DISKNUMBER", "GENRE", "LENGTH",
    "BPM",     "PLAYCOUNT", "COMPOSER",  "CATEGORY", "YEAR",        "DATE",       "TIME",  "RATING",
    "COMMENT", "PRODUCER",  "COPYRIGHT", "ENCODER",  "ENCODEDBY",   "URL"};

namespace {

struct FrameName {
    const char* tag;
    const char* frame;  // ID3v2.3
    const char* frame2; // ID3v2.2
};

constexpr FrameName kFrameNames[] = {
    {"IMAGE", "APIC", "APIC"},    {"TITLE", "TIT2", "TT2"},       {"ARTIST", "TPE1", "TP1"},
    {"ALBUM", "TALB", "TAL"},     {"TRACKNUMBER", "TRCK", "TRK"}, {"DISKNUMBER", "TPOS", "TPA"},
    {"GENRE", "TCON", "TCO"},     {"LENGTH", "TLEN", "TLE"},      {"BPM", "TBPM", "TBP"},
    {"PLAYCOUNT", "PCNT", "CNT"}, {"URL", "WXXX", "WXX"},         {"COMPOSER", "TCOM", "TCM"},
    {"CATEGORY", "TIT1", "TT1"},  {"YEAR", "TYER", "TYE"},        {"DATE", "TDAT", "TDA"},
    {"TIME", "TIME", "TIM"},      {"RATING", "POPM", "POP"},      {"COMMENT", "COMM", "COM"},
    {"PRODUCER", "TPUB", "TPB"},  {"COPYRIGHT", "TCOP", "TCR"},   {"ENCODER", "TSSE", "TSS"},
    {"ENCODEDBY", "TENC", "TEN"},
};

bool IsFrameIdCharacter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

} // namespace

bool IsStandardTag(std::string_view name) {
    for (const char* tag : _arStandardTags)
        if (name == tag) return true;
    return false;
}

std::string MapID3v2TagToHashTag(std::string_view frameId) {
    for (const FrameName& row : kFrameNames)
        if (frameId == row.frame) return row.tag;
    return std::string(frameId);
}

std::string MapHashTagToID3v2Tag(std::string_view tagName) {
    for (const FrameName& row : kFrameNames)
        if (tagName == row.tag) return row.frame;
    return std::string(tagName);
}

std::string MapHashTagToID3v2Minor2ToMinor3Tag(std::string_view frameId2) {
    for (const FrameName& row : kFrameNames)
        if (frameId2 == row.frame2) return row.frame;
    return std::string(frameId2);
}

bool IsHashTagAValidID3v2Tag(std::string_view name) {
    if (IsStandardTag(name)) return true;
    if (name.size() != 4) return false;
    for (char c : name)
        if (!IsFrameIdCharacter(c)) return false;
    const std::string id(name);
    return strcasecmp(id.c_str(), "NULL") != 0 && strcasecmp(id.c_str(), "UMID") != 0;
}
