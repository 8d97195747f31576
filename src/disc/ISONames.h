#pragma once

#include <string>
#include <string_view>

// The characters of `source` that an ISO 9660 name may hold, at most `width` of them: a to z
// become upper case, A to Z, 0 to 9 and "_" stay, a space stays only when allowed; everything
// else is dropped.
std::string LCopyToISO9660(std::string_view source, size_t width, bool allowSpaces);

// A name in the plain ISO 9660 tree (interchange level 1): an 8.3 file name ("My File.txt" ->
// "MYFILE.TXT"), or for a folder up to 8 characters without an extension.
std::string LISOName(const std::string& name, bool folder);
// A name in the Joliet tree: the name as given with characters Joliet forbids replaced by
// "_", cut to 63 bytes (the base first; an extension of more than 62 bytes leaves 56 + 7).
std::string LJolietName(const std::string& name);
// UTF-8 as UCS-2 big-endian; bytes that are not UTF-8 are taken as Latin-1.
std::string LCopyToBigEndianUnicode(std::string_view utf8);
