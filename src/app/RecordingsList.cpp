#include "app/RecordingsList.h"

#include "platform/Paths.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <utility>

std::string FormatRecordingSize(int64_t bytes) {
    char text[64];
    std::snprintf(text, sizeof text, "%.3f MB", static_cast<double>(bytes) / 1048576.0);
    return text;
}

std::string FormatRecordingTime(std::time_t time) {
    std::tm local{};
    localtime_r(&time, &local);
    char text[64];
    std::snprintf(text, sizeof text, "%.4d-%.2d-%.2d   %.2d:%.2d:%.2d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    return text;
}

std::string RenameEditText(const std::string& name) {
    char base[kPathBufferSize];
    _GetFileNameFromPath(base, name.c_str());
    return base;
}

int LRecordingsList::Find(const std::string& name) const {
    for (int i = 0; i < Count(); ++i)
        if (strcasecmp(rows_[i].name.c_str(), name.c_str()) == 0) return i;
    return -1;
}

int LRecordingsList::Add(LRecordingRow row) {
    row.insertion = nextInsertion_++;
    rows_.push_back(std::move(row));
    return Count() - 1;
}

void LRecordingsList::UpdateDetails(int index, const LRecordingRow& fresh) {
    LRecordingRow& row = rows_[static_cast<size_t>(index)];
    row.duration = fresh.duration;
    row.durationMs = fresh.durationMs;
    row.size = fresh.size;
    row.sizeBytes = fresh.sizeBytes;
    row.modified = fresh.modified;
    row.modifiedTime = fresh.modifiedTime;
}

void LRecordingsList::Remove(int index) {
    if (index < 0 || index >= Count()) return;
    rows_.erase(rows_.begin() + index);
    if (current_ == index) current_ = -1;
    else if (current_ > index) --current_;
}

void LRecordingsList::Clear() {
    rows_.clear();
    current_ = -1;
}

void LRecordingsList::Select(int index, bool selected) {
    if (index >= 0 && index < Count()) rows_[index].selected = selected;
}

void LRecordingsList::SelectOnly(int index) {
    for (int i = 0; i < Count(); ++i)
        rows_[i].selected = i == index;
    current_ = index;
}

void LRecordingsList::SelectAll() {
    for (LRecordingRow& row : rows_)
        row.selected = true;
}

std::vector<int> LRecordingsList::Selected() const {
    std::vector<int> selected;
    for (int i = 0; i < Count(); ++i)
        if (rows_[i].selected) selected.push_back(i);
    return selected;
}

bool LRecordingsList::HasSelection() const {
    return std::any_of(rows_.begin(), rows_.end(), [](const auto& row) { return row.selected; });
}

void LRecordingsList::Sort(int column, bool ascending) {
    const auto less = [column](const LRecordingRow& a, const LRecordingRow& b) {
        switch (column) {
        case 1:
            return a.durationMs < b.durationMs;
        case 2:
            return a.sizeBytes < b.sizeBytes;
        case 3:
            return a.modifiedTime < b.modifiedTime;
        default:
            return strcasecmp(a.name.c_str(), b.name.c_str()) < 0;
        }
    };
    const std::string currentName = current_ >= 0 ? rows_[current_].name : std::string();
    std::stable_sort(rows_.begin(), rows_.end(), [&](const auto& a, const auto& b) {
        return ascending ? less(a, b) : less(b, a);
    });
    current_ = currentName.empty() ? -1 : Find(currentName);
    sortColumn_ = column;
}

void LRecordingsList::Swap(int from, int to) {
    std::swap(rows_[from], rows_[to]);
    SelectOnly(to);
    sortColumn_ = -1;
}
