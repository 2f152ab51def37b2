#pragma once

#include "platform/TextMeter.h"

#include <set>

namespace rb {

// A typewriter: every character of a font has one of two widths, so that sizes are the same on every machine.
class VirtualTextMeter final : public TextMeter {
public:
    Size textSize(const std::string& text, const Font& font) const override;
    Size symbolSize(const Symbol& symbol) const override;

    // The desktop's set lacks this symbol.
    void removeSymbol(const std::string& name) { missing_.insert(name); }

private:
    std::set<std::string> missing_;
};

} // namespace rb
