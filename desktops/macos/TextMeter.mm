#include "desktops/macos/TextMeter.h"

#include "desktops/macos/Bridge.h"

namespace rb {

Size MacTextMeter::textSize(const std::string& text, const Font& font) const {
    NSDictionary<NSAttributedStringKey, id>* attributes = @{NSFontAttributeName : nsFont(font)};
    NSAttributedString* string = [[NSAttributedString alloc] initWithString:nsString(text) attributes:attributes];
    const NSSize size = string.size;
    return {size.width, size.height};
}

Size MacTextMeter::symbolSize(const Symbol& symbol) const {
    NSImage* image = nsImage(symbol);
    if (image == nil) {
        return {};
    }
    const NSSize size = image.size;
    return {size.width, size.height};
}

} // namespace rb
