// Renders the app's logo (an SVG) into an .iconset folder, the input of
// macOS's iconutil, which packs it into the bundle's .icns at build time:
//   tidewick-iconset logo.svg Tidewick.iconset
// Ten pictures: 16, 32, 128, 256 and 512 points, each at 1x and 2x.

#include <QCoreApplication>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() != 3) {
        std::fprintf(stderr, "usage: tidewick-iconset LOGO.svg OUT.iconset\n");
        return 2;
    }
    QSvgRenderer logo(args[1]);
    if (!logo.isValid()) {
        std::fprintf(stderr, "tidewick-iconset: cannot read %s\n", qPrintable(args[1]));
        return 1;
    }
    const QDir out(args[2]);
    if (!QDir().mkpath(out.path())) {
        std::fprintf(stderr, "tidewick-iconset: cannot make %s\n", qPrintable(out.path()));
        return 1;
    }
    for (const int points : {16, 32, 128, 256, 512}) {
        for (const int scale : {1, 2}) {
            const int pixels = points * scale;
            QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::transparent);
            QPainter painter(&image);
            painter.setRenderHint(QPainter::Antialiasing);
            logo.render(&painter, QRectF(0, 0, pixels, pixels));
            painter.end();
            const QString name = QStringLiteral("icon_%1x%1%2.png").arg(points).arg(scale == 2 ? "@2x" : "");
            if (!image.save(out.filePath(name), "PNG")) {
                std::fprintf(stderr, "tidewick-iconset: cannot write %s\n", qPrintable(out.filePath(name)));
                return 1;
            }
        }
    }
    return 0;
}
