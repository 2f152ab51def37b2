#include "desktops/linux/Displays.h"

#include "helpers/linux/shared/Randr.h"
#include "platform/RunLoop.h"

#include <cmath>
#include <utility>

namespace rb {

namespace {

// How many points a pixel of the mode is, across and down.
struct Scale {
    double across = 1;
    double down = 1;
};

Scale scaleOf(const RandrMode* mode, const RandrCrtc* crtc) {
    if (!mode || !crtc || mode->width == 0 || mode->height == 0) {
        return {};
    }
    const bool turned = isTurned(crtc->rotation);
    return {static_cast<double>(crtc->width) / (turned ? mode->height : mode->width),
            static_cast<double>(crtc->height) / (turned ? mode->width : mode->height)};
}

DisplayMode modeOf(const RandrMode& mode, bool turned, const Scale& scale) {
    DisplayMode result{.modeID = static_cast<std::int32_t>(mode.id),
                       .pixelWidth = turned ? mode.height : mode.width,
                       .pixelHeight = turned ? mode.width : mode.height,
                       .refreshRate = mode.rate};
    result.width = static_cast<std::size_t>(std::lround(static_cast<double>(result.pixelWidth) * scale.across));
    result.height = static_cast<std::size_t>(std::lround(static_cast<double>(result.pixelHeight) * scale.down));
    return result;
}

} // namespace

ConnectedDisplay displayOf(const RandrOutput& output, const RandrState& state) {
    const RandrCrtc* crtc = state.crtc(output.crtc);
    const RandrMode* current = crtc ? state.mode(crtc->mode) : nullptr;
    const Scale scale = scaleOf(current, crtc);
    const bool turned = crtc && isTurned(crtc->rotation);
    const Edid edid = output.edid.value_or(Edid{});
    ConnectedDisplay display{
        .identity = {.id = output.id, .vendor = edid.vendor, .model = edid.product, .serial = edid.serial},
        .name = output.displayName(),
        .builtin = output.isBuiltin()};
    for (const std::uint32_t id : output.modes) {
        if (const RandrMode* mode = state.mode(id)) {
            display.modes.push_back(modeOf(*mode, turned, scale));
        }
    }
    if (current) {
        display.currentMode = modeOf(*current, turned, scale);
    }
    return display;
}

LinuxDisplays::LinuxDisplays(XConnection& connection, RunLoop& runLoop)
    : connection_(connection)
    , runLoop_(runLoop) {}

std::vector<ConnectedDisplay> LinuxDisplays::all() const {
    std::vector<ConnectedDisplay> displays;
    const auto state = readRandr(connection_.get(), connection_.root());
    connection_.deliverQueuedEvents();
    if (state) {
        for (const RandrOutput* output : state->activeOutputs()) {
            displays.push_back(displayOf(*output, *state));
            // Without a primary output the first one is where things go.
            displays.back().main = displays.size() == 1;
        }
    }
    return displays;
}

std::optional<ConnectedDisplay> LinuxDisplays::display(std::uint32_t id) const {
    for (ConnectedDisplay& candidate : all()) {
        if (candidate.identity.id == id) {
            return std::move(candidate);
        }
    }
    return std::nullopt;
}

Handle LinuxDisplays::onChange(std::function<void()> changed) {
    follow();
    return observers_.add(std::move(changed));
}

void LinuxDisplays::follow() {
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection_.get(), &xcb_randr_id);
    if (events_ || !extension || extension->present == 0) {
        return;
    }
    xcb_randr_select_input(connection_.get(), connection_.root(),
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    const std::uint8_t first = extension->first_event;
    events_ = connection_.onEvent([this, first](const xcb_generic_event_t& event) {
        const int type = event.response_type & 0x7F;
        const bool ours = type == first + XCB_RANDR_SCREEN_CHANGE_NOTIFY || type == first + XCB_RANDR_NOTIFY;
        if (ours && !std::exchange(telling_, true)) {
            runLoop_.post(lifetime_.guard([this] {
                telling_ = false;
                observers_.notify();
            }));
        }
    });
    xcb_flush(connection_.get());
}

} // namespace rb
