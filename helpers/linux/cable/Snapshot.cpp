#include "helpers/linux/cable/Snapshot.h"

#include "helpers/linux/cable/Port.h"
#include "helpers/shared/ConnectionJson.h"
#include "helpers/shared/Edid.h"

#include <algorithm>
#include <fstream>

namespace rb {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

struct Connector {
    std::string name; // "HDMI-A-1"
    std::string monitor;
    fs::path folder;
};

std::vector<std::uint8_t> bytesOf(const fs::path& file) {
    constexpr std::size_t longest = std::size_t{32} * 128;
    std::ifstream stream(file, std::ios::binary);
    std::vector<std::uint8_t> bytes(longest);
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    return bytes;
}

// The sockets with a display on them, a laptop's own panel left out.
std::vector<Connector> connectedDisplays(const Sysfs& sysfs) {
    std::vector<Connector> found;
    const fs::path folder = sysfs.at("/sys/class/drm");
    for (const std::string& entry : Sysfs::names(folder)) {
        const std::size_t dash = entry.find('-');
        if (!entry.starts_with("card") || dash == std::string::npos ||
            Sysfs::text(folder / entry / "status") != "connected") {
            continue;
        }
        const std::string name = entry.substr(dash + 1);
        if (name.starts_with("eDP") || name.starts_with("LVDS") || name.starts_with("DSI") ||
            name.starts_with("Virtual") || name.starts_with("Writeback")) {
            continue;
        }
        const auto edid = parseEdid(bytesOf(folder / entry / "edid"));
        found.push_back({name, edid && !edid->name.empty() ? edid->name : name, folder / entry});
    }
    return found;
}

bool isDisplayPort(const Connector& connector) {
    return connector.name.starts_with("DP-");
}

// Which display hangs on a Type-C port the kernel tells by a common firmware node at best. Besides that only a single
// port with video and a single DisplayPort display leave no doubt.
const Connector* displayOf(const PortFacts& port, const std::vector<PortFacts>& ports,
                           const std::vector<Connector>& connectors) {
    if (const auto node = Sysfs::target(port.folder / "firmware_node")) {
        for (const Connector& connector : connectors) {
            if (Sysfs::target(connector.folder / "firmware_node") == node) {
                return &connector;
            }
        }
    }
    const auto withVideo =
        std::count_if(ports.begin(), ports.end(), [](const PortFacts& other) { return other.video; });
    const auto displayPorts = std::count_if(connectors.begin(), connectors.end(), isDisplayPort);
    if (!port.hotPlugDetected || withVideo != 1 || displayPorts != 1) {
        return nullptr;
    }
    return &*std::find_if(connectors.begin(), connectors.end(), isDisplayPort);
}

} // namespace

std::string connectionSnapshot(const Sysfs& sysfs) {
    std::vector<PortFacts> ports = readPorts(sysfs);
    const std::vector<Connector> connectors = connectedDisplays(sysfs);
    std::vector<const Connector*> onTypeC;
    Json list = Json::array();
    for (PortFacts& port : ports) {
        if (port.video) {
            Json link = Json::object();
            if (port.lanes) {
                link["lanes"] = *port.lanes;
            }
            if (const Connector* connector = displayOf(port, ports, connectors)) {
                link["monitorName"] = connector->monitor;
                onTypeC.push_back(connector);
            }
            port.json["displays"] = Json::array({link});
        }
        list.push_back(port.json);
    }
    for (const Connector& connector : connectors) {
        const bool shown = std::find(onTypeC.begin(), onTypeC.end(), &connector) != onTypeC.end();
        // On a machine with Type-C ports a DisplayPort display may be on any of them.
        if (!shown && (!isDisplayPort(connector) || ports.empty())) {
            list.push_back({{"name", connector.name},
                            {"connectionActive", true},
                            {"videoOnly", true},
                            {"displays", Json::array({{{"monitorName", connector.monitor}}})}});
        }
    }
    return snapshotLine(std::move(list));
}

} // namespace rb
