#include "platform/Paths.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace {

bool IsSeparator(char c) {
    return c == '/' || c == '\\';
}

// Copies text into a path buffer, cut to 259 characters.
void CopyPath(char* out, std::string_view text) {
    const std::size_t length = std::min(text.size(), kPathBufferSize - 1);
    if (length > 0) std::memmove(out, text.data(), length);
    out[length] = '\0';
}

// Position just after the last separator (0 when there is none).
std::size_t FileStart(std::string_view path) {
    const std::size_t last = path.find_last_of("/\\");
    return last == std::string_view::npos ? 0 : last + 1;
}

// Position of the dot that starts the extension of the file name, or npos.
std::size_t ExtensionStart(std::string_view path) {
    const std::size_t start = FileStart(path);
    const std::size_t dot = path.rfind('.');
    if (dot == std::string_view::npos || dot <= start) return std::string_view::npos;
    return dot;
}

} // namespace

void _MakeFilePath(char* out, const char* folder, const char* name) {
    _MakeFilePath(out, folder, name, "");
}

void _MakeFilePath(char* out, const char* folder, const char* name, const char* ext) {
    std::string path(std::string_view(folder).substr(0, kPathBufferSize - 2));
    if (!path.empty() && !IsSeparator(path.back())) path += '/';
    path += name;
    path += ext;
    CopyPath(out, path);
}

void _GetFileFromPath(char* out, const char* path) {
    const std::string_view text(path);
    CopyPath(out, text.substr(FileStart(text)));
}

void _GetFileNameFromPath(char* out, const char* path) {
    const std::string_view text(path);
    const std::size_t start = FileStart(text);
    const std::size_t dot = ExtensionStart(text);
    const std::size_t end = dot == std::string_view::npos ? text.size() : dot;
    CopyPath(out, text.substr(start, end - start));
}

void _GetFileExtensionFromPath(char* out, const char* path) {
    const std::string_view text(path);
    const std::size_t dot = text.rfind('.');
    const bool has = dot != std::string_view::npos && dot != 0 && dot >= FileStart(text);
    CopyPath(out, has ? text.substr(dot) : std::string_view());
}

void _GetFolderFromPath(char* out, const char* path) {
    const std::string_view text(path);
    const std::size_t start = FileStart(text);
    CopyPath(out, start == 0 ? std::string_view() : text.substr(0, start - 1));
}

bool PreprocessName(const char* in, char* out) {
    std::string kept;
    for (const char* p = in; *p && kept.size() < kPathBufferSize - 1; ++p) {
        const unsigned char c = static_cast<unsigned char>(*p);
        if (c < 32 || std::strchr("\"*./:<>?\\|", c)) continue;
        kept += *p;
    }
    CopyPath(out, kept);
    return !kept.empty();
}
