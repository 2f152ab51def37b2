#include "helpers/linux/resolution/ModeChange.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>

namespace rb {

namespace {

constexpr std::uint32_t largestScreen = 32767;

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename Reply>
using Answer = std::unique_ptr<Reply, Free>;

std::uint32_t bounded(std::int64_t length) {
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(length, 1, largestScreen));
}

// The area that an output with the new mode shows: turned as before, at the same number of points for a pixel.
void resize(RandrCrtc& crtc, const RandrMode& before, const RandrMode& after) {
    const bool turned = isTurned(crtc.rotation);
    const auto scaled = [](std::uint32_t area, std::uint32_t old, std::uint32_t now) {
        return old == 0 ? now : bounded(std::lround(static_cast<double>(now) * area / old));
    };
    crtc.width = scaled(crtc.width, turned ? before.height : before.width, turned ? after.height : after.width);
    crtc.height = scaled(crtc.height, turned ? before.width : before.height, turned ? after.width : after.height);
    crtc.mode = after.id;
}

std::pair<std::uint32_t, std::uint32_t> extentOf(const std::vector<RandrCrtc>& crtcs) {
    std::int64_t width = 0;
    std::int64_t height = 0;
    for (const RandrCrtc& crtc : crtcs) {
        if (crtc.mode != 0) {
            width = std::max(width, std::int64_t{crtc.x} + crtc.width);
            height = std::max(height, std::int64_t{crtc.y} + crtc.height);
        }
    }
    return {bounded(width), bounded(height)};
}

void setScreenSize(xcb_connection_t* connection, xcb_window_t root, const Arrangement& size) {
    xcb_randr_set_screen_size(connection, root, static_cast<std::uint16_t>(size.width),
                              static_cast<std::uint16_t>(size.height), std::max(size.millimetreWidth, 1U),
                              std::max(size.millimetreHeight, 1U));
}

bool setCrtc(xcb_connection_t* connection, const RandrCrtc& crtc) {
    const Answer<xcb_randr_set_crtc_config_reply_t> reply(xcb_randr_set_crtc_config_reply(
        connection,
        xcb_randr_set_crtc_config(connection, crtc.id, XCB_CURRENT_TIME, XCB_CURRENT_TIME,
                                  static_cast<std::int16_t>(crtc.x), static_cast<std::int16_t>(crtc.y), crtc.mode,
                                  crtc.rotation, static_cast<std::uint32_t>(crtc.outputs.size()), crtc.outputs.data()),
        nullptr));
    return reply && reply->status == XCB_RANDR_SET_CONFIG_SUCCESS;
}

} // namespace

std::optional<ModeChange> planChange(const RandrState& state, std::uint32_t output, std::uint32_t mode) {
    const RandrOutput* display = state.output(output);
    const RandrCrtc* crtc = display ? state.crtc(display->crtc) : nullptr;
    const RandrMode* before = crtc ? state.mode(crtc->mode) : nullptr;
    const RandrMode* after = state.mode(mode);
    if (!before || !after || std::find(display->modes.begin(), display->modes.end(), mode) == display->modes.end()) {
        return std::nullopt;
    }
    ModeChange change{.before = {.width = state.width,
                                 .height = state.height,
                                 .millimetreWidth = state.millimetreWidth,
                                 .millimetreHeight = state.millimetreHeight},
                      .crtc = crtc->id};
    for (const RandrCrtc& candidate : state.crtcs) {
        if (candidate.mode != 0) {
            change.before.crtcs.push_back(candidate);
        }
    }
    change.after = change.before;
    const std::int64_t right = std::int64_t{crtc->x} + crtc->width;
    const std::int64_t bottom = std::int64_t{crtc->y} + crtc->height;
    RandrCrtc resized = *crtc;
    resize(resized, *before, *after);
    for (RandrCrtc& candidate : change.after.crtcs) {
        if (candidate.id == crtc->id) {
            candidate = resized;
            continue;
        }
        // Where it would be with the neighbour's edge gone; never off the top or the left.
        if (candidate.x >= right) {
            candidate.x = std::max(
                candidate.x + static_cast<std::int32_t>(resized.width) - static_cast<std::int32_t>(crtc->width), 0);
        }
        if (candidate.y >= bottom) {
            candidate.y = std::max(
                candidate.y + static_cast<std::int32_t>(resized.height) - static_cast<std::int32_t>(crtc->height), 0);
        }
    }
    const auto [oldWidth, oldHeight] = extentOf(change.before.crtcs);
    const auto [newWidth, newHeight] = extentOf(change.after.crtcs);
    // A screen that was larger than its outputs stays as large, for somebody wanted it so.
    change.after.width = state.width == oldWidth ? newWidth : std::max(state.width, newWidth);
    change.after.height = state.height == oldHeight ? newHeight : std::max(state.height, newHeight);
    if (state.width > 0 && state.height > 0) {
        change.after.millimetreWidth = state.millimetreWidth * change.after.width / state.width;
        change.after.millimetreHeight = state.millimetreHeight * change.after.height / state.height;
    }
    return change;
}

bool applyArrangement(xcb_connection_t* connection, xcb_window_t root, const Arrangement& arrangement) {
    const auto now = readRandr(connection, root);
    if (!now) {
        return false;
    }
    // Others don't see a half-finished state, and don't change it meanwhile.
    xcb_grab_server(connection);
    Arrangement both = arrangement;
    both.width = std::max(now->width, arrangement.width);
    both.height = std::max(now->height, arrangement.height);
    both.millimetreWidth = std::max(now->millimetreWidth, arrangement.millimetreWidth);
    both.millimetreHeight = std::max(now->millimetreHeight, arrangement.millimetreHeight);
    if (both.width != now->width || both.height != now->height) {
        setScreenSize(connection, root, both);
    }
    bool good = true;
    for (const RandrCrtc& wanted : arrangement.crtcs) {
        const RandrCrtc* actual = now->crtc(wanted.id);
        const bool same = actual && actual->x == wanted.x && actual->y == wanted.y && actual->mode == wanted.mode &&
                          actual->rotation == wanted.rotation && actual->outputs == wanted.outputs;
        good = (same || setCrtc(connection, wanted)) && good;
    }
    if (both.width != arrangement.width || both.height != arrangement.height) {
        setScreenSize(connection, root, arrangement);
    }
    xcb_ungrab_server(connection);
    xcb_flush(connection);
    const auto after = readRandr(connection, root);
    return good && after &&
           std::all_of(arrangement.crtcs.begin(), arrangement.crtcs.end(), [&](const RandrCrtc& wanted) {
               const RandrCrtc* actual = after->crtc(wanted.id);
               return actual && actual->mode == wanted.mode && actual->x == wanted.x && actual->y == wanted.y;
           });
}

std::string writeArrangement(const Arrangement& arrangement) {
    nlohmann::json crtcs = nlohmann::json::array();
    for (const RandrCrtc& crtc : arrangement.crtcs) {
        crtcs.push_back({{"id", crtc.id},
                         {"x", crtc.x},
                         {"y", crtc.y},
                         {"width", crtc.width},
                         {"height", crtc.height},
                         {"mode", crtc.mode},
                         {"rotation", crtc.rotation},
                         {"outputs", crtc.outputs}});
    }
    const nlohmann::json json{{"width", arrangement.width},
                              {"height", arrangement.height},
                              {"millimetreWidth", arrangement.millimetreWidth},
                              {"millimetreHeight", arrangement.millimetreHeight},
                              {"crtcs", crtcs}};
    return json.dump();
}

namespace {

using Json = nlohmann::json;

// A whole number of the object within limits; `good` becomes false without one.
template <typename Number>
Number numberOf(const Json& object, const char* key, std::int64_t least, std::int64_t most, bool& good) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    if (!object.is_object() || found == object.end() || !found->is_number_integer()) {
        good = false;
        return {};
    }
    if (found->is_number_unsigned() && found->get<std::uint64_t>() > static_cast<std::uint64_t>(most)) {
        good = false;
        return {};
    }
    const auto value = found->get<std::int64_t>();
    good = good && value >= least && value <= most;
    return good ? static_cast<Number>(value) : Number{};
}

} // namespace

std::optional<Arrangement> readArrangement(const std::string& text) {
    constexpr std::int64_t anyId = std::numeric_limits<std::uint32_t>::max();
    constexpr std::int64_t anyRotation = 63;
    const Json json = Json::parse(text, nullptr, false);
    bool good = json.is_object();
    const auto length = [&](const Json& object, const char* key) {
        return numberOf<std::uint32_t>(object, key, 0, largestScreen, good);
    };
    Arrangement arrangement{.width = length(json, "width"),
                            .height = length(json, "height"),
                            .millimetreWidth = length(json, "millimetreWidth"),
                            .millimetreHeight = length(json, "millimetreHeight")};
    if (!good || !json.contains("crtcs") || !json["crtcs"].is_array()) {
        return std::nullopt;
    }
    for (const Json& entry : json["crtcs"]) {
        RandrCrtc crtc{.id = numberOf<std::uint32_t>(entry, "id", 1, anyId, good),
                       .x = numberOf<std::int32_t>(entry, "x", -32768, largestScreen, good),
                       .y = numberOf<std::int32_t>(entry, "y", -32768, largestScreen, good),
                       .width = length(entry, "width"),
                       .height = length(entry, "height"),
                       .mode = numberOf<std::uint32_t>(entry, "mode", 0, anyId, good),
                       .rotation = numberOf<std::uint16_t>(entry, "rotation", 1, anyRotation, good)};
        if (!good || !entry.contains("outputs") || !entry["outputs"].is_array()) {
            return std::nullopt;
        }
        for (const Json& output : entry["outputs"]) {
            if (!output.is_number_unsigned() || output.get<std::uint64_t>() > static_cast<std::uint64_t>(anyId)) {
                return std::nullopt;
            }
            crtc.outputs.push_back(output.get<std::uint32_t>());
        }
        arrangement.crtcs.push_back(std::move(crtc));
    }
    return good ? std::optional(std::move(arrangement)) : std::nullopt;
}

} // namespace rb
