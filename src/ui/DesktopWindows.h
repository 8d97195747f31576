#pragma once

#include "app/MainDialog.h"

class LMainWindow;

// The windows the main window opens: the recording window, the setup wizard (also in its burn
// forms), the preferences and the tag editors, each above the main window that `*shown` points to once it exists.
LMainDialogWindows LDesktopWindows(LMainWindow* const* shown);
