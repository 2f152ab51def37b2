#pragma once

#include "platform/TextMeter.h"

namespace rb {

class MacTextMeter final : public TextMeter {
public:
    Size textSize(const std::string& text, const Font& font) const override;
    Size symbolSize(const Symbol& symbol) const override;
};

} // namespace rb
