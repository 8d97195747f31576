#pragma once

#include <cstddef>

class LHashTable;
class LAudioTagData;

// Moving tag values into and out of the fixed-width text fields of wave chunk records.

// Copies the value into the field: the value and its zero, but never more than the field, so
// a value that fills the field has no zero. A character is never cut in two; the rest of the
// field is zeroed. An absent tag gives an empty field.
void GetHashTableString(const LHashTable& table, const char* name, char* field, std::size_t size);

// Sets the tag to the field's text: up to its first zero byte or its end, whichever comes
// first, taken as ISO-8859-1 when it is not valid UTF-8, then cut and trimmed as SetTag does
// (an empty text removes the tag).
void SetHashTableString(LAudioTagData& tags, const char* name, const char* field, std::size_t size);

// Sets the tag to a text of any length, unchanged: coding histories and cart tag texts are
// many lines long and cutting them would lose their newest lines. Empty removes the tag.
void SetHashTableLongString(LAudioTagData& tags, const char* name, const char* text,
                            std::size_t size);
