#include "desktops/linux/ToolTip.h"

#include <QTextDocument>

namespace rb {

QString plainToolTip(const std::string& text) {
    QString plain = QString::fromStdString(text);
    constexpr qsizetype longestLine = 48;
    const bool shortLines = [&plain] {
        for (const QString& line : plain.split(QLatin1Char('\n'))) {
            if (line.size() > longestLine) {
                return false;
            }
        }
        return true;
    }();
    if (shortLines && !Qt::mightBeRichText(plain)) {
        return plain;
    }
    return Qt::convertFromPlainText(plain, Qt::WhiteSpaceNormal);
}

} // namespace rb
