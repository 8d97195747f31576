#pragma once

#include <span>

// The main window's commands, by the numbers its menus, toolbar and posted messages use.
enum LMainCommand : int {
    CM_CLOSE_WINDOW = 1402,
    CM_WIZARD = 2001,
    CM_RECORD = 2002,
    CM_ADD_FILES = 2003,
    CM_REMOVE_FILES = 2004,
    CM_COPY_TO = 2005,
    CM_EDIT_WITH_SONEDIT = 2006,
    CM_RENAME_FILE = 2007,
    CM_PLAY_OR_SPLIT = 2008,
    CM_JOIN_FILES = 2009,
    CM_SELECT_ALL = 2010,
    CM_BURN_AUDIO_CD = 2011,
    CM_BURN_DATA_DISC = 2012,
    CM_OPEN_MUSIC_FOLDER = 2013,
    CM_PREFERENCES = 2014,
    CM_EDIT_TAG = 2019,
    CM_EDIT_SELECTED_TAGS = 2020,
    CM_MOVE_UP = 2021,
    CM_MOVE_DOWN = 2022,
    CM_VIEW_LOGS = 2023,
    CM_VIEW_RECORDINGS_FOLDER = 2024,
    CM_EJECT_DISC = 2051,
};

// When a command can be used.
enum class LCommandNeeds { Nothing, Selection, Rows };

// One command as the menus, the toolbar and the key table show it. Shortcuts are written the
// way QKeySequence reads them ("Ctrl+R", "F9"); the toolbar fields are empty for commands
// without a button.
struct LMainCommandInfo {
    int id;
    const char* menuText; // with "&" before the mnemonic; empty for toolbar-only commands
    const char* shortcut;
    const char* toolLabel;
    const char* toolIcon; // a freedesktop icon name
    const char* toolTip;
    LCommandNeeds needs;
};

// Every command of the main window.
std::span<const LMainCommandInfo> MainCommands();
// The command with this id; nullptr for none.
const LMainCommandInfo* FindMainCommand(int id);

// A menu: its title and its command ids in order, 0 for a separator.
struct LMainMenu {
    const char* title;
    std::span<const int> items;
};
std::span<const LMainMenu> MainMenus();
// The toolbar's commands in order, 0 for a separator.
std::span<const int> MainToolbar();
// The list's context menu in order, 0 for a separator.
std::span<const int> MainContextMenu();
