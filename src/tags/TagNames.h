#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// The standard tag names, in the order the editors list them.
inline constexpr std::size_t kNumStandardTags = 22;
extern const char* const _arStandardTags[kNumStandardTags];

bool IsStandardTag(std::string_view name);

// Tag name <-> ID3v2.3 frame ID. A frame ID without a standard tag is used as the tag name
// itself, and a tag name without a frame as the frame ID.
std::string MapID3v2TagToHashTag(std::string_view frameId);
std::string MapHashTagToID3v2Tag(std::string_view tagName);
// An ID3v2.2 frame ID (3 characters) to its ID3v2.3 frame ID; unknown IDs stay as they are.
std::string MapHashTagToID3v2Minor2ToMinor3Tag(std::string_view frameId2);

// Whether a tag goes into an ID3v2 tag: a standard name, or any other name that is a frame ID
// (4 characters A-Z, 0-9) other than "NULL" and "UMID", which the wave chunks use.
bool IsHashTagAValidID3v2Tag(std::string_view name);
