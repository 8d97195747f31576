#pragma once

#include <map>
#include <span>
#include <string>

class LAudioTagData;

// The behaviour of the tag editors: which tag each field shows and stores, and what OK does.
// The windows show the fields and hand back what the user typed.

// A field: its label and its tag.
struct LTagField {
    const char* label;
    const char* tag;
};

// The values of the fields by tag, as the editor shows them.
using LTagValues = std::map<std::string, std::string>;

// A date and time as the date picker holds it.
struct LTagDateTime {
    int year = 2000, month = 1, day = 1, hour = 0, minute = 0;
    friend bool operator==(const LTagDateTime&, const LTagDateTime&) = default;
};

// The ID3 editor of one file ("Audio Tag Editor").
class LIDTagDlg {
public:
    static std::span<const LTagField> Fields();

    LIDTagDlg(LAudioTagData& tags, std::string extension);
    const LTagValues& Values() const { return values_; }
    void SetValue(const std::string& tag, const std::string& value) { values_[tag] = value; }
    // The picker's start: "YEAR", "DATE" (DDMM) and "TIME" (HHMM).
    const LTagDateTime& Date() const { return date_; }
    void SetDate(const LTagDateTime& date);
    // Stores the program as "ENCODER" (and for a wave file "PRODUCERAPPVERSION"), then every
    // field (an empty one removes its tag; the user's encoder wins), "DATE" as DDMM and "TIME"
    // as HHMM from the picker: for a file that had no date only when the user set one, so that
    // no date is made up.
    void CmOk();

private:
    LAudioTagData& tags_;
    std::string extension_;
    LTagValues values_;
    LTagDateTime date_;
    bool hadDate_ = false;
    bool dateSet_ = false;
};

// The "Basic" page of the wave tag editor.
class LBasicTagDlg {
public:
    static std::span<const LTagField> Fields();

    explicit LBasicTagDlg(LAudioTagData& tags);
    const LTagValues& Values() const { return values_; }
    void SetValue(const std::string& tag, const std::string& value) { values_[tag] = value; }
    // "Clear Data": every field empty (the genre list then shows its empty entry, 147).
    void ClearData();
    void CmOk();

private:
    LAudioTagData& tags_;
    LTagValues values_;
};

// The editor of the tags shared by several files ("Edit Audio Tags").
class LAudioTagListEditor {
public:
    explicit LAudioTagListEditor(LAudioTagData& tags);
    const LTagValues& Values() const { return values_; }
    void SetValue(const std::string& tag, const std::string& value) { values_[tag] = value; }
    // The genre entry shown: the one matching the current genre without regard to case, else 0.
    int GenreIndex() const { return genre_; }
    void SetGenreIndex(int index) { genre_ = index; }
    // Stores "ARTIST", "ALBUM", "GENRE" (the selected name), "COPYRIGHT" and "COMMENT".
    void CmOk();

private:
    LAudioTagData& tags_;
    LTagValues values_;
    int genre_ = 0;
};

// The texts the batch editor shows for the fields it does not edit.
inline constexpr const char* kTitleFromFileNameNote =
    "[The title used will be the filename of the track in the main list]";
inline constexpr const char* kTrackNumbersNote =
    "[Track numbers will start at 1 and enumerate as appropriate]";
