// zelmar-render-icon SVG SIZE PNG: draws the SVG into a SIZE × SIZE picture with a
// transparent background and writes it as PNG. The build makes the program's
// hicolor icons with it, so that only the SVG is kept in the repository and every
// size is drawn by the same SVG renderer the program's own icons go through.
#include <QImage>
#include <QPainter>
#include <QStringList>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char* argv[])
{
    // No application object: drawing paths into an image needs no platform plugin,
    // so the build needs no display.
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }
    bool sizeIsNumber = false;
    const int size = arguments.value(2).toInt(&sizeIsNumber);
    if (arguments.size() != 4 || !sizeIsNumber || size <= 0 || size > 4096) {
        std::fputs("Usage: zelmar-render-icon SVG SIZE PNG\n", stderr);
        return 2;
    }
    QSvgRenderer renderer(arguments.at(1));
    if (!renderer.isValid()) {
        std::fprintf(stderr, "zelmar-render-icon: cannot read %s as SVG\n", qUtf8Printable(arguments.at(1)));
        return 1;
    }
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    renderer.render(&painter, QRectF(0, 0, size, size));
    painter.end();
    if (!image.save(arguments.at(3), "PNG")) {
        std::fprintf(stderr, "zelmar-render-icon: cannot write %s\n", qUtf8Printable(arguments.at(3)));
        return 1;
    }
    return 0;
}
