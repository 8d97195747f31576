#include "devices/VirtualDeviceSetting.h"

#include <cmath>
#include <cstdlib>

bool LReadVirtualDeviceSetting(const char* name, LVirtualDeviceSetting& setting,
                               std::string& error) {
    setting = LVirtualDeviceSetting();
    const char* value = std::getenv(name);
    if (!value) return true;
    std::string text = value;
    // The speed is only ever the last part, so a path may hold commas of its own.
    static constexpr char kSpeed[] = ",speed=";
    const std::string::size_type at = text.rfind(kSpeed);
    if (at != std::string::npos) {
        const std::string number = text.substr(at + sizeof(kSpeed) - 1);
        char* end = nullptr;
        const double speed = std::strtod(number.c_str(), &end);
        if (number.empty() || *end != '\0' || !std::isfinite(speed) || speed < 0) {
            error = std::string("The speed in ") + name + " must be a number of 0 or more, not \"" +
                    number + "\".";
            return false;
        }
        setting.speed = speed;
        text.resize(at);
    }
    setting.path = text;
    return true;
}
