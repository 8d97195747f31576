#pragma once

// The program's name as its message boxes are captioned, and the version the update check
// compares against.
inline constexpr const char* kProgramName = "Vinora Records Vinyl to CD Converter";
inline constexpr double kProgramVersion = 1.51;
