// Draws a symbol in the given sizes at build time: prerender FILE.svg OUTPUT-BASE SIZE... writes
// OUTPUT-BASE-SIZE.alpha, the opacity of each pixel as a byte, row by row. The program reads these without any image
// library.

#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>

#include <cstdio>

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    for (int i = 3; i < argc; ++i) {
        const int pixels = QString::fromLocal8Bit(argv[i]).toInt();
        QImageReader reader(QString::fromLocal8Bit(argv[1]), "svg");
        reader.setScaledSize({pixels, pixels});
        const QImage image = reader.read().convertToFormat(QImage::Format_Alpha8);
        QFile file(QString::fromLocal8Bit(argv[2]) + u'-' + QString::number(pixels) + QStringLiteral(".alpha"));
        if (image.isNull() || !file.open(QIODevice::WriteOnly)) {
            std::fprintf(stderr, "cannot draw %s at %d pixels: %s\n", argv[1], pixels,
                         qPrintable(image.isNull() ? reader.errorString() : file.errorString()));
            return 1;
        }
        for (int y = 0; y < pixels; ++y) {
            file.write(reinterpret_cast<const char*>(image.constScanLine(y)), pixels);
        }
    }
    return argc > 3 ? 0 : 1;
}
