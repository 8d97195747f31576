#include "disc/ISONames.h"

#include "disc/BurnFile.h"

namespace {

constexpr size_t kJolietNameBytes = 63;
constexpr size_t kJolietLongExtension = 62;
constexpr size_t kJolietCutBase = 56;
constexpr size_t kJolietCutExtension = 7;

bool JolietForbids(unsigned char c) {
    return c < 0x20 || c == '*' || c == '/' || c == ':' || c == ';' || c == '?' || c == '\\';
}

// The next code point of UTF-8 text; a byte that does not start a valid sequence is taken as
// Latin-1.
char32_t NextCodePoint(std::string_view text, size_t& at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(at);
    int length = first < 0x80 ? 1 : (first >> 5) == 6 ? 2 : (first >> 4) == 14 ? 3 : (first >> 3) == 30 ? 4 : 0;
    if (length > 1 && at + length <= text.size()) {
        char32_t code = first & (0x7F >> length);
        bool valid = true;
        for (int i = 1; i < length; ++i) {
            valid = valid && (byte(at + i) & 0xC0) == 0x80;
            code = code << 6 | (byte(at + i) & 0x3F);
        }
        if (valid) {
            at += length;
            return code;
        }
    }
    ++at;
    return first;
}

} // namespace

std::string LCopyToISO9660(std::string_view source, size_t width, bool allowSpaces) {
    std::string out;
    for (const char c : source) {
        if (out.size() >= width) break;
        if (c >= 'a' && c <= 'z')
            out += static_cast<char>(c - 'a' + 'A');
        else if ((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || (c == ' ' && allowSpaces))
            out += c;
    }
    return out;
}

std::string LISOName(const std::string& name, bool folder) {
    if (name.size() == 1 && (name[0] == 0 || name[0] == 1)) return name;
    if (folder) {
        const std::string base = LCopyToISO9660(name, 8, false);
        return base.empty() ? "_" : base;
    }
    std::string base;
    std::string extension;
    SplitFileName(name, base, extension);
    base = LCopyToISO9660(base, 8, false);
    if (base.empty()) base.push_back('_');
    if (extension.empty()) return base;
    const std::string kept = LCopyToISO9660(extension.substr(1), 3, false);
    if (kept.empty()) return base + "_.";
    return base + "." + kept;
}

std::string LJolietName(const std::string& name) {
    std::string clean = name;
    for (char& c : clean)
        if (JolietForbids(static_cast<unsigned char>(c))) c = '_';
    std::string base;
    std::string extension;
    SplitFileName(clean, base, extension);
    if (extension.size() > kJolietLongExtension)
        return CutUTF8(base, kJolietCutBase) + CutUTF8(extension, kJolietCutExtension);
    if (base.size() + extension.size() > kJolietNameBytes)
        return CutUTF8(base, kJolietNameBytes - extension.size()) + extension;
    return clean;
}

std::string LCopyToBigEndianUnicode(std::string_view utf8) {
    std::string out;
    const auto unit = [&out](char32_t value) {
        out += static_cast<char>(value >> 8);
        out += static_cast<char>(value & 0xFF);
    };
    for (size_t at = 0; at < utf8.size();) {
        const char32_t code = NextCodePoint(utf8, at);
        if (code >= 0x10000) {
            unit(0xD800 + ((code - 0x10000) >> 10));
            unit(0xDC00 + ((code - 0x10000) & 0x3FF));
        } else {
            unit(code);
        }
    }
    return out;
}
