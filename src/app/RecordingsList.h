#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

// One row of the recordings list: a file of the output folder.
struct LRecordingRow {
    std::string name;     // "Recorded File": the file name with its extension
    std::string duration; // "File Duration": the length as time text
    std::string size;     // "Size": "%.3f MB"
    std::string modified; // "Last Modified": "YYYY-MM-DD   HH:MM:SS", local time
    int icon = 0;         // 0 wave file, 1 MP3 file
    int insertion = 0;    // grows with every row added while the window exists
    int32_t durationMs = 0;
    int64_t sizeBytes = 0;
    std::time_t modifiedTime = 0;
    bool selected = false;
};

// The column titles, in order.
inline constexpr const char* kRecordingColumns[] = {"Recorded File", "File Duration", "Size",
                                                    "Last Modified"};

// "1.000 MB" for 1,048,576 bytes.
std::string FormatRecordingSize(int64_t bytes);
// "2009-03-02   07:05:09" (local time).
std::string FormatRecordingTime(std::time_t time);

// The text the in-place editor of a row's name starts with: the name without its extension,
// which stays as it is whatever the user types.
std::string RenameEditText(const std::string& name);

// The rows of the recordings list with their selection, sorting and moving.
class LRecordingsList {
public:
    const std::vector<LRecordingRow>& Rows() const { return rows_; }
    int Count() const { return static_cast<int>(rows_.size()); }
    bool Empty() const { return rows_.empty(); }

    // The row whose name equals `name` without regard to case; -1 for none.
    int Find(const std::string& name) const;
    // Adds a row at the end with the next insertion number; returns its index.
    int Add(LRecordingRow row);
    void Remove(int index);
    // Takes the file's details (duration, size, modification time) from `fresh`, after the
    // file was changed in place; the name, icon, order and selection stay.
    void UpdateDetails(int index, const LRecordingRow& fresh);
    void Clear();

    // Selection: the view reports it; the list keeps the current row (the focused one).
    void Select(int index, bool selected);
    void SelectOnly(int index);
    void SelectAll();
    std::vector<int> Selected() const;
    bool HasSelection() const;
    int Current() const { return current_; }
    void SetCurrent(int index) { current_ = index; }

    // Sorts by a column; switched off again by a move.
    void Sort(int column, bool ascending);
    bool IsSorted() const { return sortColumn_ >= 0; }
    // Exchanges two rows (all columns and icons); the moved row stays selected and current.
    void Swap(int from, int to);

private:
    std::vector<LRecordingRow> rows_;
    int nextInsertion_ = 0;
    int current_ = -1;
    int sortColumn_ = -1;
};
