#pragma once

#include <string>
#include <vector>

// An ordered list of name/value texts. Lookups walk the list in order and compare names
// case-sensitively; the list is short (a few dozen tags), so nothing faster is needed.
class LHashTable {
public:
    struct LHashNode {
        std::string name;
        std::string value;
    };

    // The value of the first node with that name, or `defaultValue`.
    const char* GetParm(const char* name, const char* defaultValue) const;
    // Replaces the value of an existing node; otherwise inserts a new node at the head.
    void SetParm(const char* name, const char* value);
    // Replaces the value of an existing node; otherwise appends a new node at the tail.
    void SetParmBottom(const char* name, const char* value);
    // Removes the first node with that name.
    void DeleteParm(const char* name);
    bool HasParm(const char* name) const { return Find(name) != nodes_.end(); }

    void Clear() { nodes_.clear(); }
    bool IsEmpty() const { return nodes_.empty(); }
    std::size_t GetCount() const { return nodes_.size(); }
    std::vector<LHashNode>::const_iterator begin() const { return nodes_.begin(); }
    std::vector<LHashNode>::const_iterator end() const { return nodes_.end(); }

private:
    std::vector<LHashNode>::iterator Find(const char* name);
    std::vector<LHashNode>::const_iterator Find(const char* name) const;

    std::vector<LHashNode> nodes_;
};
