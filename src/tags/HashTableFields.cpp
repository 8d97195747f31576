#include "tags/HashTableFields.h"

#include "tags/AudioTagData.h"
#include "tags/TagText.h"

#include <cstring>

void GetHashTableString(const LHashTable& table, const char* name, char* field, std::size_t size) {
    const std::string_view value = table.GetParm(name, "");
    const std::size_t length = LUTF8CutLength(value, size);
    std::memset(field, 0, size);
    std::memcpy(field, value.data(), length);
}

void SetHashTableString(LAudioTagData& tags, const char* name, const char* field,
                        std::size_t size) {
    tags.SetTag(name, LTextFromFileField(field, size).c_str(), true);
}

void SetHashTableLongString(LAudioTagData& tags, const char* name, const char* text,
                            std::size_t size) {
    const std::string value = LTextFromFileField(text, size);
    if (LTrimSpaces(value).empty())
        tags.DeleteParm(name);
    else
        tags.SetParmBottom(name, value.c_str());
}
