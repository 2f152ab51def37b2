#include "displays/ConnectionSnapshot.h"
#include "displays/HelperAnswer.h"
#include "displays/Pages.h"
#include "displays/Standby.h"
#include "fuzz/Require.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Whatever a helper writes, it is understood or refused, and what is understood can be shown.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text{reinterpret_cast<const char*>(data), size};
    const auto snapshot = rb::parseSnapshot(text);
    const auto answer = rb::parseHelperAnswer(text);
    ROOKBAY_REQUIRE(!snapshot || answer);
    for (const rb::Port& port : snapshot ? snapshot->ports : std::vector<rb::Port>{}) {
        rb::transportLabel(port.activeTransports);
        const rb::PowerSource* source = rb::powerSource(port.powerSources);
        ROOKBAY_REQUIRE(!source || !port.powerSources.empty());
        if (port.cable) {
            ROOKBAY_REQUIRE(!rb::shortSpeed(port.cable->speed).empty());
        }
    }
    ROOKBAY_REQUIRE(!rb::shortSpeed(std::string(text)).empty());

    // A display of the name that the first link mentions, whose probe got this answer.
    std::vector<rb::DisplayRow> rows{rb::DisplayRow{.id = 1, .name = "外接显示器"}};
    if (snapshot && !snapshot->ports.empty() && !snapshot->ports[0].displays.empty()) {
        rows[0].name = snapshot->ports[0].displays[0].monitorName.value_or(rows[0].name);
    }
    const rb::ConnectionSnapshot connections = snapshot.value_or(rb::ConnectionSnapshot{});
    if (answer) {
        rb::applyProbe(rows[0], rb::channelOf(rows[0], *answer), *answer, connections, {});
        rb::applyCommand(rows[0], "sleep", *answer);
        rb::carryOverUnreachable(rows, rows);
    }
    ROOKBAY_REQUIRE(rows.size() == 1);
    rb::CardPool cards;
    for (const int page : {rb::displaysPage, rb::connectionsPage}) {
        const rb::PageState state{
            .rows = rows, .connections = connections, .selectedPage = page, .technicalDetails = true};
        ROOKBAY_REQUIRE(rb::pageStack(state, {}, cards).children.size() >= 3);
    }
    return 0;
}
