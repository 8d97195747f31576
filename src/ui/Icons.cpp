#include "ui/Icons.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include <cstring>

namespace {

// Simple drawings in the style of a symbolic icon theme, 24 by 24 units.
struct FallbackIcon {
    const char* name;
    const char* svg;
};

constexpr FallbackIcon kFallbacks[] = {
    {"tools-wizard",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M3 21 15 9l-1.5-1.5L1.5 19.5z" fill="#5e5c64"/><path d="M17 2l1 3 3 1-3 1-1 3-1-3-3-1 3-1zM20 11l.5 1.5L22 13l-1.5.5L20 15l-.5-1.5L18 13l1.5-.5zM10 2l.5 1.5L12 4l-1.5.5L10 6l-.5-1.5L8 4l1.5-.5z" fill="#e5a50a"/></svg>)"},
    {"media-record",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><circle cx="12" cy="12" r="8" fill="#e01b24"/></svg>)"},
    {"media-playback-start",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M7 4v16l13-8z" fill="#26a269"/></svg>)"},
    {"media-optical-audio",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><circle cx="12" cy="12" r="10" fill="#c0bfbc" stroke="#77767b"/><circle cx="12" cy="12" r="3" fill="#fff" stroke="#77767b"/><path d="M15 5v8.5a2 2 0 1 1-1-1.7V5z" fill="#1c71d8"/></svg>)"},
    {"media-optical",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><circle cx="12" cy="12" r="10" fill="#c0bfbc" stroke="#77767b"/><circle cx="12" cy="12" r="3" fill="#fff" stroke="#77767b"/><path d="M12 2a10 10 0 0 1 10 10h-4a6 6 0 0 0-6-6z" fill="#99c1f1"/></svg>)"},
    {"folder-music",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M2 5h7l2 2h11v13H2z" fill="#62a0ea"/><path d="M15 9v6.5a1.8 1.8 0 1 1-1-1.6V11l-4 1v4.5a1.8 1.8 0 1 1-1-1.6V10z" fill="#fff"/></svg>)"},
    {"preferences-system",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><circle cx="12" cy="12" r="8.5" fill="none" stroke="#77767b" stroke-width="4" stroke-dasharray="3.3 3.4"/><circle cx="12" cy="12" r="7" fill="#77767b"/><circle cx="12" cy="12" r="2.8" fill="#fff"/></svg>)"},
    {"audio-x-wav",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M5 2h10l4 4v16H5z" fill="#f6f5f4" stroke="#77767b"/><path d="M7 14h2l1-4 2 8 2-6 1 2h2" fill="none" stroke="#1c71d8" stroke-width="1.5"/></svg>)"},
    {"audio-x-generic",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M5 2h10l4 4v16H5z" fill="#f6f5f4" stroke="#77767b"/><path d="M14 8v7.5a2 2 0 1 1-1-1.7V10l-3 .8v5.7a2 2 0 1 1-1-1.7V9.5z" fill="#c061cb"/></svg>)"},
    {"media-playback-pause",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M6 4h4v16H6zM14 4h4v16h-4z" fill="#3d3846"/></svg>)"},
    {"media-playback-stop",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M5 5h14v14H5z" fill="#3d3846"/></svg>)"},
    {"media-seek-backward",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M12 5v14L3 12zM21 5v14l-9-7z" fill="#3d3846"/></svg>)"},
    {"media-seek-forward",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M3 5v14l9-7zM12 5v14l9-7z" fill="#3d3846"/></svg>)"},
    {"media-skip-backward",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M5 5h3v14H5zM20 5v14L9 12z" fill="#3d3846"/></svg>)"},
    {"media-skip-forward",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M4 5v14l11-7zM16 5h3v14h-3z" fill="#3d3846"/></svg>)"},
    {"list-add",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M10.5 4h3v6.5H20v3h-6.5V20h-3v-6.5H4v-3h6.5z" fill="#26a269"/></svg>)"},
    {"list-remove",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M4 10.5h16v3H4z" fill="#c01c28"/></svg>)"},
    {"edit-cut",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><circle cx="7" cy="18" r="3" fill="none" stroke="#3d3846" stroke-width="2"/><circle cx="17" cy="18" r="3" fill="none" stroke="#3d3846" stroke-width="2"/><path d="M8.5 15.5 17 3M15.5 15.5 7 3" stroke="#3d3846" stroke-width="2"/></svg>)"},
    {"window-close",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><path d="M6 6l12 12M18 6 6 18" stroke="#3d3846" stroke-width="2.5"/></svg>)"},
    {"vinora",
     R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"><circle cx="12" cy="12" r="11" fill="#241f31"/><circle cx="12" cy="12" r="8" fill="none" stroke="#5e5c64" stroke-width=".6"/><circle cx="12" cy="12" r="5.5" fill="none" stroke="#5e5c64" stroke-width=".6"/><circle cx="12" cy="12" r="3.5" fill="#e01b24"/><circle cx="12" cy="12" r="1" fill="#fff"/></svg>)"},
};

const char* Svg(const char* name) {
    for (const FallbackIcon& icon : kFallbacks)
        if (std::strcmp(icon.name, name) == 0) return icon.svg;
    return nullptr;
}

QIcon Drawn(const char* name) {
    const char* svg = Svg(name);
    if (!svg) return {};
    QSvgRenderer renderer{QByteArray(svg)};
    QIcon drawn;
    for (int size : {16, 24, 32, 48, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        renderer.render(&painter);
        painter.end();
        drawn.addPixmap(pixmap);
    }
    return drawn;
}

} // namespace

QIcon LThemeIcon(const char* name) {
    return QIcon::fromTheme(QString::fromLatin1(name), Drawn(name));
}

QIcon LProgramIcon() {
    return Drawn("vinora");
}

QByteArray LProgramIconSvg() {
    return QByteArray(Svg("vinora"));
}
