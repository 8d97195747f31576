#include "tags/HashTable.h"

#include <algorithm>

std::vector<LHashTable::LHashNode>::iterator LHashTable::Find(const char* name) {
    return std::find_if(nodes_.begin(), nodes_.end(),
                        [name](const LHashNode& node) { return node.name == name; });
}

std::vector<LHashTable::LHashNode>::const_iterator LHashTable::Find(const char* name) const {
    return std::find_if(nodes_.begin(), nodes_.end(),
                        [name](const LHashNode& node) { return node.name == name; });
}

const char* LHashTable::GetParm(const char* name, const char* defaultValue) const {
    const auto node = Find(name);
    return node != nodes_.end() ? node->value.c_str() : defaultValue;
}

void LHashTable::SetParm(const char* name, const char* value) {
    const auto node = Find(name);
    if (node != nodes_.end())
        node->value = value;
    else
        nodes_.insert(nodes_.begin(), LHashNode{name, value});
}

void LHashTable::SetParmBottom(const char* name, const char* value) {
    const auto node = Find(name);
    if (node != nodes_.end())
        node->value = value;
    else
        nodes_.push_back(LHashNode{name, value});
}

void LHashTable::DeleteParm(const char* name) {
    const auto node = Find(name);
    if (node != nodes_.end()) nodes_.erase(node);
}
