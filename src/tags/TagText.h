#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Text conversions for tags. Tag values are UTF-8; files hold ISO-8859-1, UTF-16 or UTF-8.
// All conversions go through iconv. Input bytes that are not valid in their encoding are left
// out; characters that ISO-8859-1 cannot hold become a close ASCII form or "?".

// ISO-8859-1 to UTF-8.
std::string LCopyFromISO88591(std::string_view latin1);
// UTF-8 to ISO-8859-1, at most `maxBytes` bytes.
std::string LCopyToISO88591(std::string_view utf8, std::size_t maxBytes);

// UTF-16 (without byte-order mark) to UTF-8; an odd last byte is ignored.
std::string LUTF16ToUTF8(const uint8_t* data, std::size_t size, bool bigEndian);
// UTF-8 to UTF-16 little-endian, without byte-order mark or terminator.
std::string LUTF8ToUTF16LE(std::string_view utf8);

bool LIsValidUTF8(std::string_view text);
// Text read from a file whose encoding is not recorded (wave chunks): taken as UTF-8 when it
// is valid UTF-8, else as ISO-8859-1. Ends at the first zero byte.
std::string LTextFromFileField(const char* data, std::size_t size);

// The longest length of at most `maxBytes` that does not cut a UTF-8 character in two.
std::size_t LUTF8CutLength(std::string_view text, std::size_t maxBytes);
// The text without leading and trailing white space.
std::string_view LTrimSpaces(std::string_view text);
