#include "disc/BurnFile.h"

#include "tags/TagText.h"

void SplitFileName(const std::string& name, std::string& base, std::string& extension) {
    const size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0) {
        base = name;
        extension.clear();
        return;
    }
    base = name.substr(0, dot);
    extension = name.substr(dot);
}

std::string CutUTF8(const std::string& text, size_t bytes) {
    return text.substr(0, LUTF8CutLength(text, bytes));
}
