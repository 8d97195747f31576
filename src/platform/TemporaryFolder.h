#pragma once

#include <string>

// A private folder with a unique name (mkdtemp, mode 0700), removed with everything in it when
// the object goes, whatever path the code that made it leaves by.
class LTemporaryFolder {
public:
    // Makes "<root>/<prefix>XXXXXX"; Path() is empty when it could not be made.
    LTemporaryFolder(const std::string& root, const std::string& prefix);
    ~LTemporaryFolder();
    LTemporaryFolder(const LTemporaryFolder&) = delete;
    LTemporaryFolder& operator=(const LTemporaryFolder&) = delete;

    const std::string& Path() const { return path_; }
    // Removes the folder now.
    void Remove();

private:
    std::string path_;
};
