#pragma once

#include "platform/TextMeter.h"

#include <QFont>
#include <QGlyphRun>
#include <QList>
#include <QString>

namespace rb {

class Symbols;

// The interface font of the session in that size and weight; one point is one device-independent pixel.
QFont interfaceFont(const Font& font);

// A line of text, shaped once. The glyphs stand on a base line that runs through (0, 0).
struct TextLine {
    QList<QGlyphRun> glyphs;
    double width = 0;
    double ascent = 0;
    double descent = 0;
};
TextLine layOutLine(const QString& text, const QFont& font);

class LinuxTextMeter final : public TextMeter {
public:
    explicit LinuxTextMeter(const Symbols& symbols)
        : symbols_(symbols) {}
    Size textSize(const std::string& text, const Font& font) const override;
    Size symbolSize(const Symbol& symbol) const override;

private:
    const Symbols& symbols_;
};

} // namespace rb
