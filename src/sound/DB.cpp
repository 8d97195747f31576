#include "sound/DB.h"

#include <cmath>

namespace {

int32_t FixedFactor(double factor)
{
    const double scaled = factor * 16777216.0 + 0.5;
    if (scaled >= 2147483647.0)
        return 2147483647;
    return static_cast<int32_t>(scaled);
}

} // namespace

LDB::LDBTablesClass::LDBTablesClass()
{
    for (int index = 0; index < 256; ++index) {
        const int db = index - 128;
        if (db <= -127) {
            amplitude_[index] = 0;
            power_[index] = 0;
        } else {
            amplitude_[index] = FixedFactor(std::pow(10.0, db / 20.0));
            power_[index] = FixedFactor(std::pow(10.0, db / 10.0));
        }
    }
    AmplitudeTable = amplitude_ + 128;
    PowerTable = power_ + 128;
}

const LDB::LDBTablesClass& LDB::GetTable()
{
    static const LDBTablesClass* const tables = new LDBTablesClass();
    return *tables;
}

LDBMC& LDBMC::operator=(const LDBMC& other)
{
    count = other.count;
    for (int i = 0; i < count; ++i)
        values[i] = other.values[i];
    return *this;
}

LDB LDBMC::GetMonoDB() const
{
    if (count == 0)
        return LDB::kSilence;
    if (count == 1)
        return values[0];
    return values[0] > values[1] ? values[0] : values[1];
}
