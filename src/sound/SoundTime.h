#pragma once

#include <compare>
#include <cstdint>

// A signed count of milliseconds: positions, lengths and time texts of audio.
class LSoundTime {
public:
    LSoundTime() = default;
    explicit LSoundTime(int32_t ms) : ms_(ms) {}

    int32_t GetMS() const { return ms_; }
    void SetMS(int32_t ms) { ms_ = ms; }

    // Time of a frame count at a rate; a rate of 0 or less leaves the time unchanged.
    void SetSamples(int samples, int rate);
    // Frame count of this time at a rate.
    int GetSamples(int rate) const;

    // "H:MM:SS.mmm", with "-" first when negative. The buffer takes at least 32 bytes.
    void _GetText(char* text) const;
    // "H:MM:SS.hh", rounded to hundredths, with "-" first when negative.
    void _GetText2(char* text) const;
    // Parses a time typed by the user: "1:30", "1:02:03.5", "-0.25", "0:00:05:20".
    void SetText(const char* text);

    static LSoundTime FromSamples(int samples, int rate)
    {
        LSoundTime time;
        time.SetSamples(samples, rate);
        return time;
    }

    friend bool operator==(const LSoundTime&, const LSoundTime&) = default;
    friend auto operator<=>(const LSoundTime&, const LSoundTime&) = default;

private:
    int32_t ms_ = 0;
};
