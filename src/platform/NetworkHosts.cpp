#include "platform/NetworkHosts.h"

#include "platform/Settings.h"

std::string LGetNetworkHost(const char* key) {
    std::string host = LUserSettingGetString(kNetworkSection, key, "");
    const std::size_t first = host.find_first_not_of(" \t");
    if (first == std::string::npos) return {};
    const std::size_t last = host.find_last_not_of(" \t");
    return host.substr(first, last - first + 1);
}
