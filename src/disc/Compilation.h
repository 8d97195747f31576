#pragma once

#include "disc/BurnFile.h"

#include <functional>
#include <memory>
#include <string>

class LAudioCDTrack;

// One folder or file to put on a disc: its name is the file name of its source path.
class LAbstractBurnFile : public LBurnFileBase<LAbstractBurnFile> {
public:
    LAbstractBurnFile(const std::string& path, bool isFolder, uint64_t fileSize, std::time_t when);
    // An item with a name of its own and no source file (an audio CD's track).
    static std::unique_ptr<LAbstractBurnFile> Named(const std::string& name, bool isFolder,
                                                    uint64_t fileSize, std::time_t when);
    static LNameClashRule ClashRule() { return {250, 2000}; }

    // An audio CD's track; null for the files and folders of a data disc.
    std::shared_ptr<LAudioCDTrack> audioTrack;
};

// The tree of folders and files to put on a disc, with its volume label.
class LAbstractFileSystem {
public:
    LAbstractFileSystem();

    void SetFSVolumeLabel(const std::string& label) { label_ = label; }
    const std::string& VolumeLabel() const { return label_; }
    LAbstractBurnFile& Root() { return *root_; }
    const LAbstractBurnFile& Root() const { return *root_; }

    // Adds a file, or a folder with its whole tree, under `parent` (the root by default).
    // False with `error` set when the path does not exist, cannot be read or holds something
    // that is neither a file nor a folder; nothing of a failed folder is kept.
    bool AddPath(const std::string& path, std::string& error, LAbstractBurnFile* parent = nullptr);

    // Visits every item depth-first, children in order: the order in which file data is
    // placed and written.
    void ForEachItem(const std::function<void(LAbstractBurnFile&)>& visit);

private:
    bool AddTree(const std::string& path, LAbstractBurnFile& parent, std::string& error);

    std::string label_;
    std::unique_ptr<LAbstractBurnFile> root_;
};
