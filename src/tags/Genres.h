#pragma once

#include <cstddef>

// The ID3v1 genre names; the index is the ID3v1 genre byte. The last entry (147) is empty.
inline constexpr std::size_t kNumGenres = 148;
extern const char* const _Genres[kNumGenres];

// The index of the genre whose name matches without regard to case, or -1. The empty entry
// never matches.
int FindGenre(const char* name);
