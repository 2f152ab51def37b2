// Draws a symbol in the given sizes at build time: prerender FILE.svg STROKES OUTPUT-BASE SIZE... writes
// OUTPUT-BASE-SIZE.alpha, the opacity of each pixel as a byte, row by row. Strokes are drawn that many times as broad.
// The program reads these without any image library.

#include "desktops/linux/SymbolStrokes.h"

#include <QBuffer>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>

#include <cstdio>

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    if (argc < 5) {
        return 1;
    }
    QFile source(QString::fromLocal8Bit(argv[1]));
    if (!source.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", argv[1]);
        return 1;
    }
    QByteArray drawing = rb::withStrokes(source.readAll(), QByteArray(argv[2]).toDouble());
    for (int i = 4; i < argc; ++i) {
        const int pixels = QString::fromLocal8Bit(argv[i]).toInt();
        QBuffer buffer(&drawing);
        QImageReader reader(&buffer, "svg");
        reader.setScaledSize({pixels, pixels});
        const QImage image = reader.read().convertToFormat(QImage::Format_Alpha8);
        QFile file(QString::fromLocal8Bit(argv[3]) + u'-' + QString::number(pixels) + QStringLiteral(".alpha"));
        if (image.isNull() || !file.open(QIODevice::WriteOnly)) {
            std::fprintf(stderr, "cannot draw %s at %d pixels: %s\n", argv[1], pixels,
                         qPrintable(image.isNull() ? reader.errorString() : file.errorString()));
            return 1;
        }
        for (int y = 0; y < pixels; ++y) {
            file.write(reinterpret_cast<const char*>(image.constScanLine(y)), pixels);
        }
    }
    return 0;
}
