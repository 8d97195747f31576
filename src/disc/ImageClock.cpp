#include "disc/ImageClock.h"

#include <cerrno>
#include <cstdlib>
#include <optional>

namespace {

std::optional<std::time_t> SourceDateEpoch() {
    const char* text = std::getenv("SOURCE_DATE_EPOCH");
    if (!text || !*text) return std::nullopt;
    char* end = nullptr;
    errno = 0;
    const long long seconds = std::strtoll(text, &end, 10);
    if (*end || errno != 0 || seconds < 0) return std::nullopt;
    return static_cast<std::time_t>(seconds);
}

} // namespace

std::time_t LImageClockNow() {
    return SourceDateEpoch().value_or(std::time(nullptr));
}

std::tm LImageClockTime(std::time_t when) {
    std::tm out {};
    if (SourceDateEpoch()) gmtime_r(&when, &out);
    else localtime_r(&when, &out);
    return out;
}
