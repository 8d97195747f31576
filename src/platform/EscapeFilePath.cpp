#include "platform/EscapeFilePath.h"

#include "platform/Paths.h"

#include <cstring>

bool EscapeFilePath(char* out, const char* path) {
    char escaped[kPathBufferSize];
    std::size_t length = 0;
    const char* p = path;
    for (; *p; ++p) {
        const bool special = std::strchr("\"`$\\", *p) != nullptr;
        const std::size_t needed = special ? 2 : 1;
        if (length + needed > kPathBufferSize - 1) break;
        if (special) escaped[length++] = '\\';
        escaped[length++] = *p;
    }
    escaped[length] = '\0';
    std::memcpy(out, escaped, length + 1);
    return *p == '\0';
}
