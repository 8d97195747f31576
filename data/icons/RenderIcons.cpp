// Writes the program's icon into a hicolor icon theme tree for installation:
// FOLDER/scalable/apps/NAME.svg and FOLDER/SIZExSIZE/apps/NAME.png for each size given.
// Usage: vinora-icons FOLDER NAME SIZE...
#include "ui/Icons.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>
#include <cstdlib>

namespace {

bool WriteSvg(const QString& folder, const QString& name, const QByteArray& svg) {
    const QString apps = folder + "/scalable/apps";
    QFile file(apps + "/" + name + ".svg");
    return QDir().mkpath(apps) && file.open(QIODevice::WriteOnly) && file.write(svg) == svg.size();
}

bool WritePng(const QString& folder, const QString& name, QSvgRenderer& renderer, int size) {
    const QString apps = folder + QString("/%1x%1/apps").arg(size);
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    painter.end();
    return QDir().mkpath(apps) && image.save(apps + "/" + name + ".png", "PNG");
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::fprintf(stderr, "Usage: vinora-icons FOLDER NAME SIZE...\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    const QString name = QString::fromLocal8Bit(argv[2]);
    const QByteArray svg = LProgramIconSvg();
    QSvgRenderer renderer(svg);
    if (!renderer.isValid() || !WriteSvg(folder, name, svg)) {
        std::fprintf(stderr, "vinora-icons: cannot write the scalable icon into %s\n", argv[1]);
        return 2;
    }
    for (int i = 3; i < argc; ++i) {
        const int size = std::atoi(argv[i]);
        if (size <= 0 || !WritePng(folder, name, renderer, size)) {
            std::fprintf(stderr, "vinora-icons: cannot write the %s pixel icon\n", argv[i]);
            return 2;
        }
    }
    return 0;
}
