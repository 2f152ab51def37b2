#include "desktops/linux/TextMeter.h"

#include "desktops/linux/Symbols.h"

#include <QGuiApplication>
#include <QTextLayout>
#include <QTextOption>
#include <algorithm>
#include <cmath>

namespace rb {

namespace {

QFont::Weight fontWeight(FontWeight weight) {
    switch (weight) {
    case FontWeight::Regular:
        return QFont::Normal;
    case FontWeight::Medium:
        return QFont::Medium;
    // Chinese fonts seldom have a weight in between, and Qt thickens strokes only from Bold on: anything less would
    // leave the Chinese of a line thinner than its Latin.
    case FontWeight::Semibold:
    case FontWeight::Bold:
        return QFont::Bold;
    }
    return QFont::Normal;
}

} // namespace

QFont interfaceFont(const Font& font) {
    QFont result = QGuiApplication::font();
    result.setPixelSize(std::max(1, static_cast<int>(std::lround(font.size))));
    result.setWeight(fontWeight(font.weight));
    return result;
}

TextLine layOutLine(const QString& text, const QFont& font) {
    QTextLayout layout(text, font);
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    option.setUseDesignMetrics(true);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    if (!line.isValid()) {
        return {};
    }
    line.setPosition({0, 0});
    layout.endLayout();
    // Room is kept for the line's own ascent, which a font that stands in for missing characters can raise.
    line.setPosition({0, -line.ascent()});
    return {layout.glyphRuns(), line.naturalTextWidth(), line.ascent(), line.descent()};
}

Size LinuxTextMeter::textSize(const std::string& text, const Font& font) const {
    const TextLine line = layOutLine(QString::fromStdString(text), interfaceFont(font));
    return {line.width, line.ascent + line.descent};
}

Size LinuxTextMeter::symbolSize(const Symbol& symbol) const {
    return symbols_.size(symbol);
}

} // namespace rb
