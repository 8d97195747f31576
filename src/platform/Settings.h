#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// The user's settings: string values addressed by a section and a key, kept in
// "$XDG_CONFIG_HOME/Brakwater Software/Vinora.conf" (INI format). The stored name is
// section + "/" + key, or section + key when the section already ends with "/", so section
// "Settings/" and key "X" name the same setting as "Settings" and "X". Nothing is cached:
// every read looks at the file and every write is synchronised to it at once, so the program
// and vinora-cli see each other's changes. Defaults are never stored; a missing or empty value
// reads as the caller's default. Values are UTF-8 and at most 259 bytes are used; a longer
// stored value reads as empty. Callable from any thread.
//
// The sound device settings (a device's list name and its channel under "<key>Channel") are
// declared with the sound devices.

inline constexpr std::size_t kSettingValueSize = 260;

// Copies the default into `out` (260 bytes), then the stored value when the setting exists.
// Returns whether it existed.
bool _LUserSettingGetString(const char* section, const char* key, const char* defaultValue,
                            char* out);
// The same for the settings shared by every user of this computer (read only; the
// Brakwater Software/Vinora.conf files of $XDG_CONFIG_DIRS, else /etc/xdg).
bool _LSharedSettingGetString(const char* section, const char* key, const char* defaultValue,
                              char* out);
// The stored value, or the default when the setting is missing or empty.
std::string LUserSettingGetString(const char* section, const char* key,
                                  const char* defaultValue = "");

// Stores the value and synchronises the file; returns whether that succeeded.
bool LUserSettingSetString(const char* section, const char* key, const char* value);
// Removes the setting, so that the getters return their defaults again.
bool LUserSettingDeleteItem(const char* section, const char* key);

// Typed settings, stored as decimal text: int and int64_t as decimal numbers (read: the leading
// decimal number, so "12abc" is 12 and "abc" is 0), bool as "1" or "0" (read: "0" is false, any
// other text true).
template <typename T> T LUserSettingGet(const char* section, const char* key, T defaultValue);
template <typename T> bool LUserSettingSet(const char* section, const char* key, T value);

template <> int LUserSettingGet<int>(const char* section, const char* key, int defaultValue);
template <>
int64_t LUserSettingGet<int64_t>(const char* section, const char* key, int64_t defaultValue);
template <> bool LUserSettingGet<bool>(const char* section, const char* key, bool defaultValue);
template <> bool LUserSettingSet<int>(const char* section, const char* key, int value);
template <> bool LUserSettingSet<int64_t>(const char* section, const char* key, int64_t value);
template <> bool LUserSettingSet<bool>(const char* section, const char* key, bool value);

// Every stored setting of the current user, as section, key and value, sorted by section and
// key; only those of `section` when it is not empty.
struct LStoredSetting {
    std::string section;
    std::string key;
    std::string value;
};
std::vector<LStoredSetting> LUserSettingList(const std::string& section = "");

// The settings file of the current user, as the environment names it now.
std::string GetUserSettingsFilePath();
