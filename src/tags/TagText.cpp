#include "tags/TagText.h"

#include <cerrno>
#include <cstring>
#include <iconv.h>

namespace {

// Converts `size` bytes from one iconv encoding to another. When an input sequence cannot be
// converted, `unit` bytes of it are dropped and the conversion goes on.
std::string Convert(const char* to, const char* from, const char* data, std::size_t size,
                    std::size_t unit) {
    std::string out;
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1)) return out;

    char* in = const_cast<char*>(data);
    std::size_t inLeft = size;
    char buffer[1024];
    while (inLeft > 0) {
        char* outPtr = buffer;
        std::size_t outLeft = sizeof(buffer);
        const std::size_t result = iconv(cd, &in, &inLeft, &outPtr, &outLeft);
        out.append(buffer, sizeof(buffer) - outLeft);
        if (result != static_cast<std::size_t>(-1)) break;
        if (errno == E2BIG) continue;
        // EILSEQ or EINVAL: a byte sequence that does not belong to the input encoding.
        const std::size_t skip = inLeft < unit ? inLeft : unit;
        in += skip;
        inLeft -= skip;
    }
    char* outPtr = buffer;
    std::size_t outLeft = sizeof(buffer);
    iconv(cd, nullptr, nullptr, &outPtr, &outLeft);
    out.append(buffer, sizeof(buffer) - outLeft);
    iconv_close(cd);
    return out;
}

} // namespace

std::string LCopyFromISO88591(std::string_view latin1) {
    return Convert("UTF-8", "ISO-8859-1", latin1.data(), latin1.size(), 1);
}

std::string LCopyToISO88591(std::string_view utf8, std::size_t maxBytes) {
    std::string out = Convert("ISO-8859-1//TRANSLIT", "UTF-8", utf8.data(), utf8.size(), 1);
    if (out.size() > maxBytes) out.resize(maxBytes);
    return out;
}

std::string LUTF16ToUTF8(const uint8_t* data, std::size_t size, bool bigEndian) {
    return Convert("UTF-8", bigEndian ? "UTF-16BE" : "UTF-16LE",
                   reinterpret_cast<const char*>(data), size & ~std::size_t{1}, 2);
}

std::string LUTF8ToUTF16LE(std::string_view utf8) {
    return Convert("UTF-16LE", "UTF-8", utf8.data(), utf8.size(), 1);
}

bool LIsValidUTF8(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size()) {
        const auto c = static_cast<unsigned char>(text[i]);
        std::size_t follow = 0;
        uint32_t code = 0;
        if (c < 0x80) {
            ++i;
            continue;
        }
        if (c >= 0xC2 && c <= 0xDF) {
            follow = 1;
            code = c & 0x1F;
        } else if (c >= 0xE0 && c <= 0xEF) {
            follow = 2;
            code = c & 0x0F;
        } else if (c >= 0xF0 && c <= 0xF4) {
            follow = 3;
            code = c & 0x07;
        } else {
            return false;
        }
        if (i + follow >= text.size()) return false;
        for (std::size_t k = 1; k <= follow; ++k) {
            const auto f = static_cast<unsigned char>(text[i + k]);
            if ((f & 0xC0) != 0x80) return false;
            code = (code << 6) | (f & 0x3F);
        }
        // Over-long forms, surrogates and code points past U+10FFFF.
        if ((follow == 2 && code < 0x800) || (follow == 3 && code < 0x10000) ||
            (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF)
            return false;
        i += follow + 1;
    }
    return true;
}

std::string LTextFromFileField(const char* data, std::size_t size) {
    const void* zero = std::memchr(data, 0, size);
    const std::string_view text(data, zero ? static_cast<const char*>(zero) - data : size);
    return LIsValidUTF8(text) ? std::string(text) : LCopyFromISO88591(text);
}

std::size_t LUTF8CutLength(std::string_view text, std::size_t maxBytes) {
    if (text.size() <= maxBytes) return text.size();
    std::size_t length = maxBytes;
    // Back up over continuation bytes to the start of the character that would be cut.
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
        --length;
    return length;
}

std::string_view LTrimSpaces(std::string_view text) {
    constexpr const char* kSpaces = " \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(kSpaces);
    if (first == std::string_view::npos) return {};
    const std::size_t last = text.find_last_not_of(kSpaces);
    return text.substr(first, last - first + 1);
}
