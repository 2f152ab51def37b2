#include "displays/DisplayRow.h"

#include "displays/Number.h"

namespace rb {

DisplayRow rowOf(const ConnectedDisplay& display) {
    DisplayRow row{.id = display.identity.id,
                   .name = display.name.empty() ? "外接显示器" : display.name,
                   .main = display.main,
                   .online = true,
                   .builtin = display.builtin,
                   .modeIdentity = modeIdentity(display.identity),
                   .modes = modeList(display.modes)};
    if (display.currentMode) {
        row.currentMode = RBModeInfo(*display.currentMode);
        row.resolution =
            std::to_string(row.currentMode->pixelWidth) + " × " + std::to_string(row.currentMode->pixelHeight);
        row.refresh = row.currentMode->rate > 0 ? fixedText(row.currentMode->rate, 0) + " Hz" : "系统未报告";
    }
    return row;
}

} // namespace rb
