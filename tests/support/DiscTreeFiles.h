#pragma once

// Files of the trees that disc tests burn or lay out, and comparing what tools read back.

#include "disc/ISONames.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

// Writes a file, making its folders.
inline void WriteTreeFile(const std::filesystem::path& path, const std::string& content) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

// `size` bytes that a seed repeats.
inline std::string RandomBytes(size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string out(size, 0);
    for (char& c : out) c = static_cast<char>(random());
    return out;
}

inline bool SameFile(const std::filesystem::path& a, const std::filesystem::path& b) {
    int status = -1;
    RunCommand("cmp -s " + ShellQuote(a) + " " + ShellQuote(b), &status);
    return status == 0;
}

// The path a source file has in the Joliet tree: each name cut as Joliet cuts it.
inline std::filesystem::path JolietPath(const std::filesystem::path& relative) {
    std::filesystem::path out;
    for (const std::filesystem::path& part : relative) out /= LJolietName(part.string());
    return out;
}

// Extracts a disc image's ISO 9660/Joliet and UDF trees with 7z into `work` and expects every
// file of `tree` (found under `base` in the image) in both, byte for byte. The relative paths
// of the files compared, in the image's terms.
inline std::vector<std::filesystem::path> ExpectExtractedTree(const std::filesystem::path& image,
                                                              const std::filesystem::path& tree,
                                                              const std::filesystem::path& base,
                                                              const std::filesystem::path& work) {
    int status = -1;
    RunCommand("7z x -tiso -o" + ShellQuote(work / "joliet") + " " + ShellQuote(image), &status);
    EXPECT_EQ(status, 0);
    RunCommand("7z x -tudf -o" + ShellQuote(work / "udf") + " " + ShellQuote(image), &status);
    EXPECT_EQ(status, 0);
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(tree)) {
        if (!entry.is_regular_file()) continue;
        const std::filesystem::path relative = std::filesystem::relative(entry.path(), base);
        files.push_back(relative);
        EXPECT_TRUE(SameFile(entry.path(), work / "udf" / relative)) << relative;
        EXPECT_TRUE(SameFile(entry.path(), work / "joliet" / JolietPath(relative))) << relative;
    }
    return files;
}
