#include "disc/Compilation.h"

#include "disc/ImageClock.h"
#include "platform/Log.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

uint64_t Allocated(uint64_t size) {
    return (size + 2047) / 2048 * 2048;
}

void Visit(LAbstractBurnFile& item, const std::function<void(LAbstractBurnFile&)>& visit) {
    for (auto& [name, child] : item.children) {
        visit(*child);
        if (child->folder) Visit(*child, visit);
    }
}

} // namespace

LAbstractBurnFile::LAbstractBurnFile(const std::string& path, bool isFolder, uint64_t fileSize,
                                     std::time_t when) {
    name = fs::path(path).filename().string();
    if (name.empty()) name = fs::path(path).parent_path().filename().string();
    folder = isFolder;
    sourcePath = path;
    size = isFolder ? 0 : fileSize;
    allocatedSize = isFolder ? 0 : Allocated(fileSize);
    date = when;
}

std::unique_ptr<LAbstractBurnFile> LAbstractBurnFile::Named(const std::string& name, bool isFolder,
                                                            uint64_t fileSize, std::time_t when) {
    auto item = std::make_unique<LAbstractBurnFile>(name, isFolder, fileSize, when);
    item->name = name;
    item->sourcePath.clear();
    return item;
}

LAbstractFileSystem::LAbstractFileSystem()
    : root_(std::make_unique<LAbstractBurnFile>("Label", true, 0, LImageClockNow())) {}

bool LAbstractFileSystem::AddPath(const std::string& path, std::string& error,
                                  LAbstractBurnFile* parent) {
    return AddTree(path, parent ? *parent : *root_, error);
}

bool LAbstractFileSystem::AddTree(const std::string& path, LAbstractBurnFile& parent,
                                  std::string& error) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        error = "\"" + path + "\" " + (errno == ENOENT ? "does not exist" : std::strerror(errno));
        return false;
    }
    if (S_ISREG(info.st_mode)) {
        if (access(path.c_str(), R_OK) != 0) {
            error = "\"" + path + "\" cannot be read: " + std::strerror(errno);
            return false;
        }
        auto file = std::make_unique<LAbstractBurnFile>(path, false, info.st_size, info.st_mtime);
        if (!parent.AddSubFile(std::move(file))) {
            error = "too many files named alike as \"" + path + "\"";
            return false;
        }
        return true;
    }
    if (!S_ISDIR(info.st_mode)) {
        // Inside a folder a pipe, socket or device is left out; named on its own it is refused.
        // (A folder being filled has no parent yet: it is added whole when complete.)
        if (!parent.parent && &parent != root_.get()) {
            LOG("Not put on the disc: \"%s\" is neither a file nor a folder", path.c_str());
            return true;
        }
        error = "\"" + path + "\" is neither a file nor a folder";
        return false;
    }
    std::error_code failure;
    fs::directory_iterator entries(path, failure);
    if (failure) {
        error = "\"" + path + "\" cannot be read: " + failure.message();
        return false;
    }
    // The folder is filled first and added whole, so that its sizes reach the ancestors.
    auto folder = std::make_unique<LAbstractBurnFile>(path, true, 0, info.st_mtime);
    for (const fs::directory_entry& entry : entries)
        if (!AddTree(entry.path().string(), *folder, error)) return false;
    if (!parent.AddSubFile(std::move(folder))) {
        error = "too many folders named alike as \"" + path + "\"";
        return false;
    }
    return true;
}

void LAbstractFileSystem::ForEachItem(const std::function<void(LAbstractBurnFile&)>& visit) {
    Visit(*root_, visit);
}
