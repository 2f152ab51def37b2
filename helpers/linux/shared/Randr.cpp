#include "helpers/linux/shared/Randr.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace rb {

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename Reply>
using Answer = std::unique_ptr<Reply, Free>;

constexpr std::uint32_t longestEdid = 32 * 128 / 4; // in units of four bytes

double rateOf(const xcb_randr_mode_info_t& info) {
    double lines = info.vtotal;
    if ((info.mode_flags & XCB_RANDR_MODE_FLAG_DOUBLE_SCAN) != 0) {
        lines *= 2;
    }
    if ((info.mode_flags & XCB_RANDR_MODE_FLAG_INTERLACE) != 0) {
        lines /= 2;
    }
    const double dots = info.htotal * lines;
    return dots > 0 ? info.dot_clock / dots : 0;
}

xcb_atom_t atomOf(xcb_connection_t* connection, std::string_view name) {
    const Answer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 1, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

using PropertyReply = Answer<xcb_randr_get_output_property_reply_t>;

PropertyReply property(xcb_connection_t* connection, std::uint32_t output, xcb_atom_t atom) {
    if (atom == XCB_ATOM_NONE) {
        return nullptr;
    }
    return PropertyReply(xcb_randr_get_output_property_reply(
        connection, xcb_randr_get_output_property(connection, output, atom, XCB_ATOM_ANY, 0, longestEdid, 0, 0),
        nullptr));
}

std::string connectorTypeOf(xcb_connection_t* connection, std::uint32_t output, xcb_atom_t atom) {
    const PropertyReply reply = property(connection, output, atom);
    if (!reply || reply->type != XCB_ATOM_ATOM || reply->format != 32 || reply->num_items != 1) {
        return {};
    }
    xcb_atom_t value = XCB_ATOM_NONE;
    std::copy_n(xcb_randr_get_output_property_data(reply.get()), sizeof value, reinterpret_cast<std::uint8_t*>(&value));
    const Answer<xcb_get_atom_name_reply_t> name(
        xcb_get_atom_name_reply(connection, xcb_get_atom_name(connection, value), nullptr));
    return name ? std::string(xcb_get_atom_name_name(name.get()),
                              static_cast<std::size_t>(xcb_get_atom_name_name_length(name.get())))
                : std::string();
}

std::vector<std::uint8_t> edidOf(xcb_connection_t* connection, std::uint32_t output, xcb_atom_t atom) {
    const PropertyReply reply = property(connection, output, atom);
    if (!reply || reply->format != 8) {
        return {};
    }
    const std::uint8_t* data = xcb_randr_get_output_property_data(reply.get());
    return {data, data + xcb_randr_get_output_property_data_length(reply.get())};
}

std::optional<RandrOutput> readOutput(xcb_connection_t* connection, std::uint32_t id,
                                      xcb_randr_get_output_info_cookie_t cookie) {
    const Answer<xcb_randr_get_output_info_reply_t> info(xcb_randr_get_output_info_reply(connection, cookie, nullptr));
    if (!info) {
        return std::nullopt;
    }
    const std::uint8_t* name = xcb_randr_get_output_info_name(info.get());
    const xcb_randr_mode_t* modes = xcb_randr_get_output_info_modes(info.get());
    RandrOutput output{.id = id,
                       .name = std::string(reinterpret_cast<const char*>(name),
                                           static_cast<std::size_t>(xcb_randr_get_output_info_name_length(info.get()))),
                       .connected = info->connection == XCB_RANDR_CONNECTION_CONNECTED,
                       .crtc = info->crtc};
    output.modes.assign(modes, modes + xcb_randr_get_output_info_modes_length(info.get()));
    return output;
}

std::optional<RandrCrtc> readCrtc(xcb_connection_t* connection, std::uint32_t id,
                                  xcb_randr_get_crtc_info_cookie_t cookie) {
    const Answer<xcb_randr_get_crtc_info_reply_t> info(xcb_randr_get_crtc_info_reply(connection, cookie, nullptr));
    if (!info) {
        return std::nullopt;
    }
    const xcb_randr_output_t* outputs = xcb_randr_get_crtc_info_outputs(info.get());
    RandrCrtc crtc{.id = id,
                   .x = info->x,
                   .y = info->y,
                   .width = info->width,
                   .height = info->height,
                   .mode = info->mode,
                   .rotation = info->rotation};
    crtc.outputs.assign(outputs, outputs + xcb_randr_get_crtc_info_outputs_length(info.get()));
    return crtc;
}

template <typename Thing>
const Thing* find(const std::vector<Thing>& things, std::uint32_t id) {
    const auto found = std::find_if(things.begin(), things.end(), [id](const Thing& thing) { return thing.id == id; });
    return found != things.end() ? &*found : nullptr;
}

} // namespace

bool RandrOutput::isBuiltin() const {
    const auto isCalled = [this](std::string_view start) { return name.starts_with(start); };
    return connectorType == "Panel" || isCalled("eDP") || isCalled("LVDS") || isCalled("DSI");
}

const std::string& RandrOutput::displayName() const {
    return edid && !edid->name.empty() ? edid->name : name;
}

const RandrMode* RandrState::mode(std::uint32_t id) const {
    return find(modes, id);
}

const RandrCrtc* RandrState::crtc(std::uint32_t id) const {
    return find(crtcs, id);
}

const RandrOutput* RandrState::output(std::uint32_t id) const {
    return find(outputs, id);
}

std::vector<const RandrOutput*> RandrState::activeOutputs() const {
    std::vector<const RandrOutput*> active;
    for (const RandrOutput& candidate : outputs) {
        const RandrCrtc* itsCrtc = crtc(candidate.crtc);
        if (itsCrtc && itsCrtc->mode != 0) {
            active.push_back(&candidate);
        }
    }
    std::stable_partition(active.begin(), active.end(),
                          [this](const RandrOutput* candidate) { return candidate->id == primary; });
    return active;
}

bool isTurned(std::uint16_t rotation) {
    return (rotation & (XCB_RANDR_ROTATION_ROTATE_90 | XCB_RANDR_ROTATION_ROTATE_270)) != 0;
}

std::optional<RandrState> readRandr(xcb_connection_t* connection, xcb_window_t root) {
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_randr_id);
    if (!extension || extension->present == 0) {
        return std::nullopt;
    }
    const auto resourcesCookie = xcb_randr_get_screen_resources_current(connection, root);
    const auto primaryCookie = xcb_randr_get_output_primary(connection, root);
    const auto geometryCookie = xcb_get_geometry(connection, root);
    const Answer<xcb_randr_get_screen_resources_current_reply_t> resources(
        xcb_randr_get_screen_resources_current_reply(connection, resourcesCookie, nullptr));
    const Answer<xcb_randr_get_output_primary_reply_t> primary(
        xcb_randr_get_output_primary_reply(connection, primaryCookie, nullptr));
    const Answer<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(connection, geometryCookie, nullptr));
    if (!resources || !geometry) {
        return std::nullopt;
    }
    RandrState state{.configTimestamp = resources->config_timestamp,
                     .primary = primary ? primary->output : 0,
                     .width = geometry->width,
                     .height = geometry->height};
    for (auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection)); screens.rem > 0;
         xcb_screen_next(&screens)) {
        if (screens.data->root == root && screens.data->width_in_pixels > 0 && screens.data->height_in_pixels > 0) {
            // As dense as when the session began.
            state.millimetreWidth = state.width * screens.data->width_in_millimeters / screens.data->width_in_pixels;
            state.millimetreHeight =
                state.height * screens.data->height_in_millimeters / screens.data->height_in_pixels;
        }
    }
    const xcb_randr_mode_info_t* modes = xcb_randr_get_screen_resources_current_modes(resources.get());
    for (int i = 0; i < xcb_randr_get_screen_resources_current_modes_length(resources.get()); ++i) {
        state.modes.push_back({modes[i].id, modes[i].width, modes[i].height, rateOf(modes[i])});
    }
    // All requests go out before the first answer is read.
    const std::uint32_t timestamp = resources->config_timestamp;
    const xcb_randr_output_t* outputs = xcb_randr_get_screen_resources_current_outputs(resources.get());
    const xcb_randr_crtc_t* crtcs = xcb_randr_get_screen_resources_current_crtcs(resources.get());
    const int outputCount = xcb_randr_get_screen_resources_current_outputs_length(resources.get());
    const int crtcCount = xcb_randr_get_screen_resources_current_crtcs_length(resources.get());
    std::vector<xcb_randr_get_output_info_cookie_t> outputCookies;
    std::vector<xcb_randr_get_crtc_info_cookie_t> crtcCookies;
    outputCookies.reserve(static_cast<std::size_t>(outputCount));
    crtcCookies.reserve(static_cast<std::size_t>(crtcCount));
    for (int i = 0; i < outputCount; ++i) {
        outputCookies.push_back(xcb_randr_get_output_info(connection, outputs[i], timestamp));
    }
    for (int i = 0; i < crtcCount; ++i) {
        crtcCookies.push_back(xcb_randr_get_crtc_info(connection, crtcs[i], timestamp));
    }
    for (int i = 0; i < outputCount; ++i) {
        if (auto output = readOutput(connection, outputs[i], outputCookies[static_cast<std::size_t>(i)])) {
            state.outputs.push_back(*std::move(output));
        }
    }
    for (int i = 0; i < crtcCount; ++i) {
        if (auto crtc = readCrtc(connection, crtcs[i], crtcCookies[static_cast<std::size_t>(i)])) {
            state.crtcs.push_back(*std::move(crtc));
        }
    }
    const xcb_atom_t edidAtom = atomOf(connection, "EDID");
    const xcb_atom_t connectorAtom = atomOf(connection, "ConnectorType");
    for (RandrOutput& output : state.outputs) {
        if (output.connected || output.crtc != 0) {
            output.edidBytes = edidOf(connection, output.id, edidAtom);
            output.edid = parseEdid(output.edidBytes);
            output.connectorType = connectorTypeOf(connection, output.id, connectorAtom);
        }
    }
    return state;
}

std::string identityOf(const RandrOutput& output) {
    const Edid edid = output.edid.value_or(Edid{});
    return std::to_string(output.id) + ":" + std::to_string(edid.vendor) + ":" + std::to_string(edid.product) + ":" +
           std::to_string(edid.serial);
}

} // namespace rb
