#pragma once

#include <string>

// The servers the program downloads components from and asks for new versions. Each is a
// setting in section "Network" holding a host name with an optional ":port"; none has a
// default, and a download from a host that is not set fails with PROCESS_FAILED.
inline constexpr const char* kNetworkSection = "Network";
inline constexpr const char* kComponentHostKey = "ComponentHost";
inline constexpr const char* kWebHostKey = "WebHost";
inline constexpr const char* kVersionHostKey = "VersionHost";

// The host stored under the key, without surrounding blanks; empty when it is not set.
std::string LGetNetworkHost(const char* key);
