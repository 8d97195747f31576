#include "platform/TemporaryFolder.h"

#include <stdlib.h>

#include <filesystem>

LTemporaryFolder::LTemporaryFolder(const std::string& root, const std::string& prefix) {
    std::string pattern = root + "/" + prefix + "XXXXXX";
    if (mkdtemp(pattern.data())) path_ = pattern;
}

LTemporaryFolder::~LTemporaryFolder() {
    Remove();
}

void LTemporaryFolder::Remove() {
    if (path_.empty()) return;
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
    path_.clear();
}
