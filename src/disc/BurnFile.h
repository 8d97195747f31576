#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <memory>
#include <string>

// What every item of a disc tree has: its name in its file system, the source it comes from,
// its sizes and date, and where its data lies on the disc.
struct LBurnFileData {
    virtual ~LBurnFileData() = default;

    std::string name;
    bool folder = false;
    // The source file's full path; empty for folders made for the disc.
    std::string sourcePath;
    // A file's size; a folder's sum of its descendants' sizes.
    uint64_t size = 0;
    // Sizes rounded up to 2048 bytes (a folder: its descendants' sum).
    uint64_t allocatedSize = 0;
    // First sector of a file's data on the disc; 0 until placed.
    uint32_t sector = 0;
    uint32_t subfolderCount = 0;
    std::time_t date = 0;
};

// How a tree renames a child whose name is taken: numbers from 2 are appended to the base
// (cut to `baseBytes` less the number's length) until a free name is found, below `limit`.
struct LNameClashRule {
    size_t baseBytes;
    int limit;
};

// The name split at its last dot: "song.mp3" -> "song" and ".mp3"; a name starting with its
// only dot has no extension.
void SplitFileName(const std::string& name, std::string& base, std::string& extension);
// Cuts UTF-8 text to at most `bytes`, never inside a character.
std::string CutUTF8(const std::string& text, size_t bytes);

// A tree item with its parent and its children, ordered by plain byte comparison of their names.
template <typename T>
class LBurnFileBase : public LBurnFileData {
public:
    using Children = std::map<std::string, std::unique_ptr<T>>;

    T* parent = nullptr;
    Children children;

    // Adds a child, renaming it by the tree's clash rule when its name is taken. The sizes go to
    // this folder and to every ancestor. Returns the child, or null when no free name was found
    // (or this is a file).
    T* AddSubFile(std::unique_ptr<T> child) {
        if (!folder) return nullptr;
        if (children.count(child->name) && !Rename(*child)) return nullptr;
        child->parent = static_cast<T*>(this);
        if (child->folder) ++subfolderCount;
        for (LBurnFileBase* up = this; up; up = up->parent) {
            up->size += child->size;
            up->allocatedSize += child->allocatedSize;
        }
        T* added = child.get();
        children.emplace(child->name, std::move(child));
        return added;
    }

private:
    bool Rename(T& child) const {
        const LNameClashRule rule = static_cast<const T&>(*this).ClashRule();
        std::string base;
        std::string extension;
        SplitFileName(child.name, base, extension);
        for (int number = 2; number < rule.limit; ++number) {
            const std::string suffix = std::to_string(number);
            const size_t room = rule.baseBytes > suffix.size() ? rule.baseBytes - suffix.size() : 0;
            std::string name = CutUTF8(base, room) + suffix + extension;
            if (!children.count(name)) {
                child.name = std::move(name);
                return true;
            }
        }
        return false;
    }
};
