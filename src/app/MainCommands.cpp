#include "app/MainCommands.h"

namespace {

using enum LCommandNeeds;

constexpr LMainCommandInfo kCommands[] = {
    {CM_WIZARD, "Open Recording &Wizard", "", "Wizard", "tools-wizard",
     "Calibrate your recording setup with the Vinora Records Wizard. (Shortcut: Ctrl + W)",
     Nothing},
    {CM_RECORD, "Start &Recording Session", "Ctrl+R", "Record", "media-record",
     "Start a recording session. (Shortcut: Ctrl + R)", Nothing},
    {CM_ADD_FILES, "&Add File(s)...", "Alt+A", "", "", "", Nothing},
    {CM_REMOVE_FILES, "&Remove File(s)", "Ctrl+Backspace", "", "", "", Selection},
    {CM_COPY_TO, "Copy To", "Ctrl+S", "", "", "", Selection},
    {CM_EDIT_WITH_SONEDIT, "Edit file with Sonedit", "F8", "", "", "", Selection},
    {CM_RENAME_FILE, "&Rename File", "F2", "", "", "", Selection},
    {CM_PLAY_OR_SPLIT, "&Play or Split File", "F9", "Play", "media-playback-start",
     "Play the selected file and access options for track splitting. (Shortcut: F9)", Selection},
    {CM_JOIN_FILES, "&Join Files", "Ctrl+J", "", "", "", Selection},
    {CM_SELECT_ALL, "Select All", "Ctrl+A", "", "", "", Rows},
    {CM_BURN_AUDIO_CD, "Burn an Audio CD...", "Ctrl+U", "Burn Audio", "media-optical-audio",
     "Burn currently selected files to an Audio CD. (Shortcut: Ctrl + U)", Rows},
    {CM_BURN_DATA_DISC, "Burn a Wave/MP3 CD/DVD...", "Ctrl+M", "Burn MP3", "media-optical",
     "Burn currently selected files to an MP3 or Wave CD/DVD. (Shortcut: Ctrl + M)", Rows},
    {CM_EJECT_DISC, "Eject Disc", "", "", "", "", Nothing},
    {CM_OPEN_MUSIC_FOLDER, "Open Music Folder...", "Ctrl+I", "Music Folder", "folder-music",
     "Open music folder. (Shortcut: Ctrl + I)", Nothing},
    {CM_CLOSE_WINDOW, "Close Window", "Ctrl+W", "", "", "", Nothing},
    {CM_EDIT_TAG, "Edit &Tag", "Ctrl+T", "", "", "", Selection},
    {CM_EDIT_SELECTED_TAGS, "Edit Selected Ta&gs", "Ctrl+G", "", "", "", Selection},
    {CM_MOVE_UP, "Move Selected File Up", "-", "", "", "", Selection},
    {CM_MOVE_DOWN, "Move Selected File Down", "Num++", "", "", "", Selection},
    {CM_VIEW_LOGS, "View Logs...", "", "", "", "", Nothing},
    {CM_VIEW_RECORDINGS_FOLDER, "View Recordings Folder...", "", "", "", "", Nothing},
    {CM_PREFERENCES, "", "", "Preferences", "preferences-system",
     "Access further options for Vinora Records. (Shortcut: Ctrl + O)", Nothing},
};

constexpr int kFileMenu[] = {CM_WIZARD,
                             CM_RECORD,
                             0,
                             CM_ADD_FILES,
                             CM_REMOVE_FILES,
                             CM_COPY_TO,
                             CM_EDIT_WITH_SONEDIT,
                             CM_RENAME_FILE,
                             CM_PLAY_OR_SPLIT,
                             CM_JOIN_FILES,
                             0,
                             CM_SELECT_ALL,
                             0,
                             CM_BURN_AUDIO_CD,
                             CM_BURN_DATA_DISC,
                             CM_EJECT_DISC,
                             0,
                             CM_OPEN_MUSIC_FOLDER,
                             0,
                             CM_CLOSE_WINDOW};
constexpr int kEditMenu[] = {CM_EDIT_TAG, CM_EDIT_SELECTED_TAGS, CM_MOVE_UP, CM_MOVE_DOWN};
constexpr int kViewMenu[] = {CM_VIEW_LOGS, CM_VIEW_RECORDINGS_FOLDER};

constexpr LMainMenu kMenus[] = {{"&File", kFileMenu}, {"&Edit", kEditMenu}, {"&View", kViewMenu}};

constexpr int kToolbar[] = {CM_WIZARD,          CM_RECORD,         0,
                            CM_BURN_AUDIO_CD,   CM_BURN_DATA_DISC, CM_PLAY_OR_SPLIT,
                            0,                  CM_OPEN_MUSIC_FOLDER, CM_PREFERENCES};

constexpr int kContextMenu[] = {CM_EDIT_TAG,       CM_EDIT_SELECTED_TAGS, 0,
                                CM_EDIT_WITH_SONEDIT, CM_ADD_FILES,       CM_REMOVE_FILES,
                                CM_COPY_TO,        CM_RENAME_FILE,        CM_PLAY_OR_SPLIT,
                                CM_JOIN_FILES,     0,                     CM_MOVE_UP,
                                CM_MOVE_DOWN,      0,                     CM_SELECT_ALL};

} // namespace

std::span<const LMainCommandInfo> MainCommands() {
    return kCommands;
}

const LMainCommandInfo* FindMainCommand(int id) {
    for (const LMainCommandInfo& command : kCommands)
        if (command.id == id) return &command;
    return nullptr;
}

std::span<const LMainMenu> MainMenus() {
    return kMenus;
}

std::span<const int> MainToolbar() {
    return kToolbar;
}

std::span<const int> MainContextMenu() {
    return kContextMenu;
}
