#include "record/LevelMeterScale.h"

void LDBMeterScale::CalculateColours(int length) {
    length_ = length;
    pixels_.clear();
    for (int db = minDB_; db <= maxDB_; ++db)
        pixels_.push_back(MapDBToPixel(static_cast<int8_t>(db)));
    colours_.clear();
    for (int pixel = 0; pixel < length; ++pixel)
        colours_.push_back(MapPixelToColour(pixel));
}

int LDBMeterScale::MapDBToPixel(LDB db) const {
    return static_cast<int>(static_cast<double>(db - minDB_) / (maxDB_ - minDB_) * length_);
}

LDBMeterScale::Colour LDBMeterScale::MapPixelToColour(int pixel) const {
    const int zero = MapDBToPixel(0);
    const int half = zero >> 1;
    const auto colour = [](double r, double g, double b) {
        return Colour{static_cast<uint16_t>(static_cast<int>(r) << 8),
                      static_cast<uint16_t>(static_cast<int>(g) << 8),
                      static_cast<uint16_t>(static_cast<int>(b) << 8)};
    };
    if (pixel > zero) return {0xFF00, 0, 0};
    if (half == 0) return colour(0, 255, 0);
    if (pixel <= half) {
        const double t = static_cast<double>(pixel) / half;
        return colour(t * 255, 255, 0);
    }
    const double t = static_cast<double>(pixel - half) / half;
    return colour(255, 255 - t * 102, 0);
}
