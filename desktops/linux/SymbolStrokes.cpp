#include "desktops/linux/SymbolStrokes.h"

#include <QRegularExpression>

namespace rb {

QByteArray withStrokes(const QByteArray& drawing, double scale) {
    static const QRegularExpression width(QStringLiteral("stroke-width=\"([0-9.]+)\""));
    const QString text = QString::fromUtf8(drawing);
    QString result;
    qsizetype copied = 0;
    for (auto found = width.globalMatch(text); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        result += QStringView(text).mid(copied, match.capturedStart(1) - copied);
        result += QString::number(match.captured(1).toDouble() * scale);
        copied = match.capturedEnd(1);
    }
    result += QStringView(text).mid(copied);
    return result.toUtf8();
}

} // namespace rb
