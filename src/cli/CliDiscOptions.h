#pragma once

#include "cli/CliJobProgress.h"

#include <cstdint>
#include <string>
#include <vector>

class LAbstractFileSystem;

// What the disc commands share: their progress on stderr and the parsing of their options.

// Job progress for burns and erases: besides the terminal's percentage, every new status text
// goes to stderr as a line of its own, so that a script or a log sees what the drive is doing
// ("Please insert a media ...").
class CliDiscProgress : public CliJobProgress {
public:
    void SetStatus(const char* text, int line) override;

private:
    std::string lines_[2];
};

// "--drive N": a drive index; false when the text is not one.
bool ParseDrive(const std::string& text, uint8_t& drive);

// "--project N": a data disc project (1 to 18); false when the text is not one.
bool ParseProject(const std::string& text, int& project);

// Adds files and whole folders to a compilation; false, with the reason on stderr after
// "vinora-cli COMMAND: ", when one cannot be added.
bool CliAddPaths(LAbstractFileSystem& compilation, const std::vector<std::string>& paths,
                 const char* command);
