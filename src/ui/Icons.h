#pragma once

#include <QIcon>

// An icon from the desktop's icon theme, or the program's own drawing of it when the theme has
// none. Names are freedesktop icon names ("media-record", "folder-music").
QIcon LThemeIcon(const char* name);
// The program's own icon, and its drawing as SVG text.
QIcon LProgramIcon();
QByteArray LProgramIconSvg();
