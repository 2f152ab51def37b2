#pragma once

#include "desktops/linux/Appearance.h"
#include "desktops/linux/Files.h"
#include "desktops/linux/LayerPainter.h"
#include "desktops/linux/LayerRenderer.h"
#include "desktops/linux/Symbols.h"
#include "desktops/linux/TextMeter.h"
#include "desktops/linux/Thumbnails.h"
#include "desktops/virtual/Desktop.h"
#include "desktops/virtual/Replacements.h"

#include <memory>

namespace rb {

// A virtual desktop that measures, colours, draws and decodes pictures as the Linux one does. The look is "light" or
// "dark".
struct Stage {
    explicit Stage(const char* look) { desktop.userDefaults().setObject("LinuxAppearance", look); }

    Desktop services() {
        return withReplaced(desktop.services(), {.appearance = &appearance(),
                                                 .textMeter = &meter,
                                                 .files = &files,
                                                 .layerRenderer = &renderer,
                                                 .thumbnails = &thumbnails});
    }
    LinuxAppearance& appearance() {
        if (!appearance_) {
            appearance_ = std::make_unique<LinuxAppearance>(desktop.userDefaults());
        }
        return *appearance_;
    }

    VirtualDesktop desktop;
    Symbols symbols;
    LinuxTextMeter meter{symbols};
    LayerPainter painter{symbols};
    LinuxLayerRenderer renderer{painter};
    LinuxFiles files;
    LinuxThumbnails thumbnails;

private:
    std::unique_ptr<LinuxAppearance> appearance_;
};

} // namespace rb
