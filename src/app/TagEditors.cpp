#include "app/TagEditors.h"

#include "platform/ProgramInfo.h"
#include "tags/AudioTagData.h"
#include "tags/Genres.h"

#include <strings.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr LTagField kID3Fields[] = {
    {"Title:", "TITLE"},       {"Artist:", "ARTIST"},     {"Album:", "ALBUM"},
    {"Track Number:", "TRACKNUMBER"}, {"Disk Number:", "DISKNUMBER"}, {"Length:", "LENGTH"},
    {"Genre:", "GENRE"},       {"Category:", "CATEGORY"}, {"Composer:", "COMPOSER"},
    {"Year:", "YEAR"},         {"Comment / Description:", "COMMENT"},
    {"Play Count:", "PLAYCOUNT"}, {"BPM:", "BPM"},       {"Producer:", "PRODUCER"},
    {"Copyright:", "COPYRIGHT"}, {"Encoder:", "ENCODER"}, {"Encoded By:", "ENCODEDBY"},
    {"URL:", "URL"},
};

constexpr LTagField kBasicFields[] = {
    {"Title:", "TITLE"},          {"Artist:", "ARTIST"},         {"Album:", "ALBUM"},
    {"Genre:", "GENRE"},          {"Track Number:", "TRACKNUMBER"}, {"Year:", "YEAR"},
    {"Comment / Description:", "COMMENT"}, {"Client ID:", "CLIENTID"},
    {"Classification:", "CLASSIFICATION"}, {"Start Date:", "STARTDATE"},
    {"Start Time:", "STARTTIME"}, {"End Date:", "ENDDATE"},      {"End Time:", "ENDTIME"},
    {"Out Cue:", "OUTCUE"},       {"Producer:", "ENCODEDBY"},    {"Copyright:", "COPYRIGHT"},
    {"URL:", "URL"},
};

LTagValues Read(const LAudioTagData& tags, std::span<const LTagField> fields) {
    LTagValues values;
    for (const LTagField& field : fields)
        values[field.tag] = tags.GetTag(field.tag);
    return values;
}

void Store(LAudioTagData& tags, const LTagValues& values) {
    for (const auto& [tag, value] : values)
        tags.SetTag(tag.c_str(), value.c_str(), true);
}

std::string ProgramText() {
    char text[128];
    std::snprintf(text, sizeof text, "%s %.2f", kProgramName, kProgramVersion);
    return text;
}

std::string Version() {
    char text[16];
    std::snprintf(text, sizeof text, "%.2f", kProgramVersion);
    return text;
}

int Number(const std::string& text, std::size_t from, std::size_t count, int fallback) {
    if (text.size() < from + count) return fallback;
    return std::atoi(text.substr(from, count).c_str());
}

} // namespace

std::span<const LTagField> LIDTagDlg::Fields() {
    return kID3Fields;
}

LIDTagDlg::LIDTagDlg(LAudioTagData& tags, std::string extension)
    : tags_(tags), extension_(std::move(extension)), values_(Read(tags, kID3Fields)) {
    const std::string date = tags.GetTag("DATE"), time = tags.GetTag("TIME");
    hadDate_ = !date.empty() || !time.empty();
    date_.year = Number(tags.GetTag("YEAR"), 0, 4, date_.year);
    date_.day = Number(date, 0, 2, date_.day);
    date_.month = Number(date, 2, 2, date_.month);
    date_.hour = Number(time, 0, 2, date_.hour);
    date_.minute = Number(time, 2, 2, date_.minute);
}

void LIDTagDlg::SetDate(const LTagDateTime& date) {
    if (!(date == date_)) dateSet_ = true;
    date_ = date;
}

void LIDTagDlg::CmOk() {
    tags_.SetTag("ENCODER", ProgramText().c_str(), true);
    if (strcasecmp(extension_.c_str(), ".wav") == 0)
        tags_.SetTag("PRODUCERAPPVERSION", Version().c_str(), true);
    Store(tags_, values_);
    if (!hadDate_ && !dateSet_) return;
    char text[16];
    std::snprintf(text, sizeof text, "%.2d%.2d", date_.day, date_.month);
    tags_.SetTag("DATE", text, true);
    std::snprintf(text, sizeof text, "%.2d%.2d", date_.hour, date_.minute);
    tags_.SetTag("TIME", text, true);
}

std::span<const LTagField> LBasicTagDlg::Fields() {
    return kBasicFields;
}

LBasicTagDlg::LBasicTagDlg(LAudioTagData& tags) : tags_(tags), values_(Read(tags, kBasicFields)) {}

void LBasicTagDlg::ClearData() {
    for (auto& [tag, value] : values_)
        value.clear();
}

void LBasicTagDlg::CmOk() {
    tags_.SetTag("ENCODER", ProgramText().c_str(), true);
    tags_.SetTag("PRODUCERAPPVERSION", Version().c_str(), true);
    Store(tags_, values_);
}

LAudioTagListEditor::LAudioTagListEditor(LAudioTagData& tags) : tags_(tags) {
    for (const char* tag : {"ARTIST", "ALBUM", "COPYRIGHT", "COMMENT"})
        values_[tag] = tags.GetTag(tag);
    const std::string genre = tags.GetTag("GENRE");
    for (std::size_t i = 0; i < kNumGenres; ++i)
        if (strcasecmp(_Genres[i], genre.c_str()) == 0) {
            genre_ = static_cast<int>(i);
            break;
        }
}

void LAudioTagListEditor::CmOk() {
    Store(tags_, values_);
    tags_.SetTag("GENRE", _Genres[genre_], true);
}
