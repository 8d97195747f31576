#include "record/FileNamePattern.h"

#include "platform/Paths.h"

#include <strings.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

std::string TwoDigits(int value) {
    char text[16];
    std::snprintf(text, sizeof text, "%.2d", value);
    return text;
}

std::string Argument(const std::string& name, const std::tm& local, int autoNumber) {
    const auto is = [&](const char* what) { return strcasecmp(name.c_str(), what) == 0; };
    if (is("YYYY")) {
        char text[16];
        std::snprintf(text, sizeof text, "%.4d", local.tm_year + 1900);
        return text;
    }
    if (is("MM")) return TwoDigits(local.tm_mon + 1);
    if (is("DD")) return TwoDigits(local.tm_mday);
    if (is("HH")) return TwoDigits(local.tm_hour);
    if (is("MIN")) return TwoDigits(local.tm_min);
    if (is("SS")) return TwoDigits(local.tm_sec);
    if (is("autonumber")) return TwoDigits(autoNumber);
    return {};
}

} // namespace

void CreateFormatedFileName(char* out, const char* pattern, int autoNumber) {
    CreateFormatedFileName(out, pattern, autoNumber, std::time(nullptr));
}

void CreateFormatedFileName(char* out, const char* pattern, int autoNumber, std::time_t now) {
    std::tm local{};
    localtime_r(&now, &local);
    std::string result;
    for (const char* p = pattern; *p;) {
        if (*p != '%') {
            result += *p++;
            continue;
        }
        const char* end = std::strchr(p + 1, '%');
        const std::string name = end ? std::string(p + 1, end) : std::string(p + 1);
        if (end && end == p + 1)
            result += '%';
        else
            result += Argument(name, local, autoNumber);
        p = end ? end + 1 : p + 1 + name.size();
    }
    std::snprintf(out, kPathBufferSize, "%s", result.c_str());
}
