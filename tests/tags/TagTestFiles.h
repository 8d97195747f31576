#pragma once

#include "codecs/WaveTestUtil.h"
#include "support/TempHome.h"
#include "tags/AudioTagData.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

// Test files for the tag tests: short MP3 and wave files made with sox and LAME, and what
// outside tools (ffprobe, mutagen) read from a file. Byte access comes from the wave tests.

namespace tagtest {

// A title with two-byte characters.
inline constexpr const char* kCafe = "Caf\xC3\xA9 M\xC3\xBCller";

// The tags of the file, read in `mode`.
inline LAudioTagData Read(const std::filesystem::path& path, int mode = tagModeAll) {
    LAudioTagData tags;
    tags.ReadTags(path.c_str(), mode);
    return tags;
}

inline void Append(std::vector<uint8_t>& bytes, const std::string& text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

// Half a second of a stereo 440 Hz tone as 16-bit 44.1 kHz PCM (sox's header: 44 bytes).
inline std::filesystem::path MakeWave(const std::filesystem::path& folder,
                                      const std::string& name = "tone.wav") {
    const std::filesystem::path path = folder / name;
    RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(path.string()) +
               " synth 0.5 sine 440 2>&1");
    return path;
}

// The same tone as a 128 kbit/s MP3 without tags.
inline std::filesystem::path MakeMp3(const std::filesystem::path& folder,
                                     const std::string& name = "tone.mp3") {
    const std::filesystem::path wave = MakeWave(folder, name + ".source.wav");
    const std::filesystem::path path = folder / name;
    RunCommand("lame --quiet -b 128 " + ShellQuote(wave.string()) + " " +
               ShellQuote(path.string()) + " 2>&1");
    std::filesystem::remove(wave);
    return path;
}

// The file's tags as ffprobe reads them, lower-case names.
inline std::map<std::string, std::string> FFprobeTags(const std::filesystem::path& path) {
    const std::string output =
        RunCommand("ffprobe -v error -show_entries format_tags -of default=noprint_wrappers=1 " +
                   ShellQuote(path.string()));
    std::map<std::string, std::string> tags;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t equals = line.find('=');
        if (!line.starts_with("TAG:") || equals == std::string::npos) continue;
        std::string name = line.substr(4, equals - 4);
        for (char& c : name)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        tags[name] = line.substr(equals + 1);
    }
    return tags;
}

// Runs a Python script with the system's Python (where mutagen is installed); the file path
// is the script's sys.argv[1].
inline std::string RunMutagen(const std::string& script, const std::filesystem::path& path,
                              int* status = nullptr) {
    return RunCommand("/usr/bin/python3 -c " + ShellQuote(script) + " " +
                          ShellQuote(path.string()) + " 2>&1",
                      status);
}

// Checks the named tags of a store, one failure per differing tag.
inline void ExpectTags(const LAudioTagData& tags,
                       std::initializer_list<std::pair<const char*, std::string>> expected) {
    for (const auto& [name, value] : expected)
        EXPECT_EQ(tags.GetTag(name), value) << name;
}

} // namespace tagtest
