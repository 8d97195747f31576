#pragma once

#include "sound/DB.h"

#include <array>
#include <cstdint>
#include <vector>

// The mapping of a level meter from decibels to pixels and colours: the bar runs from minDB
// (-48) to maxDB (0) over `length` pixels; green to yellow over the lower half of the range to
// 0 dB, yellow to orange over the upper half, red above 0 dB.
class LDBMeterScale {
public:
    using Colour = std::array<uint16_t, 3>; // red, green, blue in 16 bits each

    LDBMeterScale(LDB minDB = -48, LDB maxDB = 0) : minDB_(minDB), maxDB_(maxDB) {}

    // Rebuilds the pixel and colour tables for a bar of `length` pixels.
    void CalculateColours(int length);
    int Length() const { return length_; }

    int MapDBToPixel(LDB db) const;
    Colour MapPixelToColour(int pixel) const;
    // The colour the table holds for a pixel.
    const Colour& ColourAt(int pixel) const { return colours_[static_cast<std::size_t>(pixel)]; }
    // dB between the labels of the scale.
    int LabelStep() const { return length_ < 141 ? 12 : length_ < 271 ? 6 : 3; }
    LDB MinDB() const { return minDB_; }
    LDB MaxDB() const { return maxDB_; }

private:
    LDB minDB_;
    LDB maxDB_;
    int length_ = 0;
    std::vector<int> pixels_; // per dB from minDB to maxDB
    std::vector<Colour> colours_;
};
