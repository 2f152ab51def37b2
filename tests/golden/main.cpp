#include <QApplication>
#include <QFontInfo>
#include <QIcon>
#include <gtest/gtest.h>

#include <cstdio>

// Pictures need fonts but no screen, and the same font and icons everywhere.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QIcon::setThemeSearchPaths({}); // our own icons, whatever is installed
    const QString family = QStringLiteral("WenQuanYi Micro Hei");
    QApplication::setFont(QFont(family));
    if (!QFontInfo(QFont(family)).family().startsWith(family)) {
        std::fprintf(stderr, "the font %s (fonts-wqy-microhei) is missing\n", qPrintable(family));
        return 1;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
