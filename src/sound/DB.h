#pragma once

#include <cstdint>

// A level in whole decibels, -127 standing for silence.
class LDB {
public:
    static constexpr int8_t kSilence = -127;

    LDB() = default;
    LDB(int8_t db) : db_(db) {}
    operator int8_t() const { return db_; }

    // Amplitude and power factors in 8.24 fixed point, indexed by dB from -128 to +127
    // through pointers at the 0 dB entry.
    class LDBTablesClass {
    public:
        LDBTablesClass();
        const int32_t* AmplitudeTable;
        const int32_t* PowerTable;

    private:
        int32_t amplitude_[256];
        int32_t power_[256];
    };

    // The one instance, built on first use.
    static const LDBTablesClass& GetTable();

private:
    int8_t db_ = 0;
};

// One level per channel.
class LDBMC {
public:
    LDBMC() = default;
    LDBMC(const LDBMC& other) { *this = other; }
    LDBMC& operator=(const LDBMC& other);

    uint8_t count = 0;
    LDB values[256] = {};

    // The level of the loudest of the first two channels.
    LDB GetMonoDB() const;
};
