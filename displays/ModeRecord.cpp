#include "displays/ModeRecord.h"

#include "displays/Number.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace rb {

namespace {

constexpr double rateTolerance = 1.0; // hertz

std::string labelOf(const ModeRecord& record) {
    std::string label = std::to_string(record.width) + " × " + std::to_string(record.height) + " · " +
                        (record.hidpi ? "HiDPI" : "普通");
    if (record.rate > 0) {
        label += " · " + fixedText(record.rate, 2) + " Hz";
    }
    return label;
}

} // namespace

ModeRecord RBModeInfo(const DisplayMode& mode) {
    ModeRecord record{.modeID = mode.modeID,
                      .width = mode.width,
                      .height = mode.height,
                      .pixelWidth = mode.pixelWidth,
                      .pixelHeight = mode.pixelHeight,
                      .rate = mode.refreshRate};
    record.hidpi =
        mode.width != 0 && mode.height != 0 && mode.pixelWidth > mode.width && mode.pixelHeight > mode.height;
    record.label = labelOf(record);
    return record;
}

std::vector<ModeRecord> modeList(const std::vector<DisplayMode>& modes) {
    std::vector<ModeRecord> records;
    std::set<std::int32_t> seen;
    for (const DisplayMode& mode : modes) {
        if (mode.usableForDesktop && seen.insert(mode.modeID).second) {
            records.push_back(RBModeInfo(mode));
        }
    }
    std::stable_sort(records.begin(), records.end(), [](const ModeRecord& a, const ModeRecord& b) {
        if (a.hidpi != b.hidpi) {
            return a.hidpi;
        }
        const std::size_t areaA = a.width * a.height;
        const std::size_t areaB = b.width * b.height;
        return areaA != areaB ? areaA > areaB : a.rate > b.rate;
    });
    return records;
}

std::string modeIdentity(const DisplayIdentity& identity) {
    return std::to_string(identity.id) + ":" + std::to_string(identity.vendor) + ":" + std::to_string(identity.model) +
           ":" + std::to_string(identity.serial);
}

bool isSameMode(const ModeRecord& chosen, const ModeRecord& actual) {
    return chosen.width == actual.width && chosen.height == actual.height && chosen.pixelWidth == actual.pixelWidth &&
           chosen.pixelHeight == actual.pixelHeight && std::abs(chosen.rate - actual.rate) < rateTolerance;
}

} // namespace rb
