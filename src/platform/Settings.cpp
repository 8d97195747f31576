#include "platform/Settings.h"

#include "platform/UserFolders.h"

#include <QSettings>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr const char* kSettingsFile = "/Brakwater Software/Vinora.conf";

std::string StoredNameText(const char* section, const char* key) {
    std::string name = section;
    if (name.empty() || name.back() != '/') name += '/';
    return name + key;
}

QString StoredName(const char* section, const char* key) {
    return QString::fromStdString(StoredNameText(section, key));
}

// Reads one setting from an INI file into `value`; false when it is not there.
bool ReadSetting(const std::string& file, const QString& name, std::string& value) {
    const QSettings settings(QString::fromStdString(file), QSettings::IniFormat);
    const QVariant stored = settings.value(name);
    if (!stored.isValid()) return false;
    // A hand-edited value with commas in it comes back as a list.
    const QString text = stored.typeId() == QMetaType::QStringList
                             ? stored.toStringList().join(QStringLiteral(", "))
                             : stored.toString();
    value = text.toStdString();
    return true;
}

// The value into a 260-byte buffer; one that does not fit leaves the buffer empty.
void CopyValue(char* out, const std::string& value) {
    if (value.size() < kSettingValueSize)
        std::memcpy(out, value.c_str(), value.size() + 1);
    else
        out[0] = '\0';
}

bool GetString(const std::string& file, const char* section, const char* key,
               const char* defaultValue, char* out) {
    std::snprintf(out, kSettingValueSize, "%s", defaultValue);
    std::string value;
    if (!ReadSetting(file, StoredName(section, key), value)) return false;
    CopyValue(out, value);
    return true;
}

std::vector<std::string> SharedSettingsFiles() {
    const char* dirs = std::getenv("XDG_CONFIG_DIRS");
    const std::string list = dirs && dirs[0] ? dirs : "/etc/xdg";
    std::vector<std::string> files;
    std::size_t start = 0;
    while (start <= list.size()) {
        const std::size_t end = std::min(list.find(':', start), list.size());
        const std::string dir = list.substr(start, end - start);
        if (!dir.empty() && dir[0] == '/') files.push_back(dir + kSettingsFile);
        start = end + 1;
    }
    return files;
}

} // namespace

std::string GetUserSettingsFilePath() {
    return GetConfigHomeFolder() + kSettingsFile;
}

std::vector<LStoredSetting> LUserSettingList(const std::string& section) {
    const QSettings settings(QString::fromStdString(GetUserSettingsFilePath()), QSettings::IniFormat);
    std::vector<LStoredSetting> list;
    for (const QString& name : settings.allKeys()) {
        const std::string text = name.toStdString();
        const std::size_t slash = text.rfind('/');
        LStoredSetting setting{slash == std::string::npos ? "General" : text.substr(0, slash),
                               text.substr(slash == std::string::npos ? 0 : slash + 1), ""};
        if (!section.empty() && setting.section != section) continue;
        ReadSetting(GetUserSettingsFilePath(), name, setting.value);
        list.push_back(std::move(setting));
    }
    std::sort(list.begin(), list.end(), [](const LStoredSetting& a, const LStoredSetting& b) {
        return a.section != b.section ? a.section < b.section : a.key < b.key;
    });
    return list;
}

bool _LUserSettingGetString(const char* section, const char* key, const char* defaultValue,
                            char* out) {
    return GetString(GetUserSettingsFilePath(), section, key, defaultValue, out);
}

bool _LSharedSettingGetString(const char* section, const char* key, const char* defaultValue,
                              char* out) {
    for (const std::string& file : SharedSettingsFiles()) {
        if (GetString(file, section, key, defaultValue, out)) return true;
    }
    return false;
}

std::string LUserSettingGetString(const char* section, const char* key, const char* defaultValue) {
    char value[kSettingValueSize];
    _LUserSettingGetString(section, key, "", value);
    return value[0] ? value : defaultValue;
}

bool LUserSettingSetString(const char* section, const char* key, const char* value) {
    QSettings settings(QString::fromStdString(GetUserSettingsFilePath()), QSettings::IniFormat);
    settings.setValue(StoredName(section, key), QString::fromUtf8(value));
    settings.sync();
    return settings.status() == QSettings::NoError;
}

bool LUserSettingDeleteItem(const char* section, const char* key) {
    QSettings settings(QString::fromStdString(GetUserSettingsFilePath()), QSettings::IniFormat);
    settings.remove(StoredName(section, key));
    settings.sync();
    return settings.status() == QSettings::NoError;
}

template <> int LUserSettingGet<int>(const char* section, const char* key, int defaultValue) {
    char value[kSettingValueSize];
    _LUserSettingGetString(section, key, "", value);
    if (!value[0]) return defaultValue;
    const long number = std::strtol(value, nullptr, 10);
    return static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
}

template <>
int64_t LUserSettingGet<int64_t>(const char* section, const char* key, int64_t defaultValue) {
    char value[kSettingValueSize];
    _LUserSettingGetString(section, key, "", value);
    if (!value[0]) return defaultValue;
    return std::strtoll(value, nullptr, 10);
}

template <> bool LUserSettingGet<bool>(const char* section, const char* key, bool defaultValue) {
    char value[kSettingValueSize];
    _LUserSettingGetString(section, key, "", value);
    if (!value[0]) return defaultValue;
    return std::strcmp(value, "0") != 0;
}

template <> bool LUserSettingSet<int>(const char* section, const char* key, int value) {
    return LUserSettingSetString(section, key, std::to_string(value).c_str());
}

template <> bool LUserSettingSet<int64_t>(const char* section, const char* key, int64_t value) {
    return LUserSettingSetString(section, key, std::to_string(value).c_str());
}

template <> bool LUserSettingSet<bool>(const char* section, const char* key, bool value) {
    return LUserSettingSetString(section, key, value ? "1" : "0");
}
