#include "displays/ConnectionSnapshot.h"
#include "displays/HelperAnswer.h"
#include "displays/Number.h"

#include "tests/displays/DisplaysFixture.h"

#include <clocale>

namespace rb {

namespace {

using testing::ElementsAre;

TEST(ModeRecordTest, LabelsSayPointsKindAndRate) {
    EXPECT_EQ(RBModeInfo(modeOf(1, 1920, 1080, 60, 2)).label, "1920 × 1080 · HiDPI · 60.00 Hz");
    EXPECT_EQ(RBModeInfo(modeOf(1, 2560, 1440, 0)).label, "2560 × 1440 · 普通");
    EXPECT_EQ(RBModeInfo(modeOf(1, 1280, 720, 59.94)).label, "1280 × 720 · 普通 · 59.94 Hz");
    DisplayMode wideOnly = modeOf(1, 1280, 720, 0);
    wideOnly.pixelWidth = 2560;
    EXPECT_FALSE(RBModeInfo(wideOnly).hidpi) << "both directions count";
    EXPECT_FALSE(RBModeInfo({.pixelWidth = 10, .pixelHeight = 10}).hidpi) << "a mode without points is nothing";
}

TEST(ModeRecordTest, TheListIsUsableUniqueAndSorted) {
    DisplayMode hidden = modeOf(9, 8000, 8000, 60);
    hidden.usableForDesktop = false;
    const auto list =
        modeList({modeOf(1, 1280, 720, 60), modeOf(2, 1920, 1080, 50), modeOf(3, 1920, 1080, 60),
                  modeOf(4, 1280, 720, 60, 2), hidden, modeOf(2, 640, 480, 60), modeOf(5, 1280, 720, 60)});
    std::vector<std::int32_t> ids;
    for (const ModeRecord& record : list) {
        ids.push_back(record.modeID);
    }
    EXPECT_THAT(ids, ElementsAre(4, 3, 2, 1, 5)) << "HiDPI, area, rate, then the system's order; the first of a number";
    EXPECT_EQ(list[2].width, 1920U);
}

TEST(ModeRecordTest, ReadingBackForgivesRoundingOfRatesOnly) {
    const ModeRecord chosen = RBModeInfo(modeOf(1, 1920, 1080, 60));
    EXPECT_TRUE(isSameMode(chosen, RBModeInfo(modeOf(5, 1920, 1080, 59.94))));
    EXPECT_FALSE(isSameMode(chosen, RBModeInfo(modeOf(1, 1920, 1080, 50))));
    EXPECT_FALSE(isSameMode(chosen, RBModeInfo(modeOf(1, 1920, 1080, 59))));
    EXPECT_FALSE(isSameMode(chosen, RBModeInfo(modeOf(1, 1920, 1080, 60, 2))));
    EXPECT_FALSE(isSameMode(chosen, RBModeInfo(modeOf(1, 1920, 1200, 60))));
}

TEST(RowTest, TellsWhatTheSystemToldAndNothingElse) {
    const DisplayRow row = rowOf({.identity = {7, 4268, 16857, 4294967295U}, .main = true});
    EXPECT_EQ(row.name, "外接显示器");
    EXPECT_EQ(row.modeIdentity, "7:4268:16857:4294967295");
    EXPECT_EQ(row.resolution, std::nullopt);
    EXPECT_EQ(row.refresh, std::nullopt);
    EXPECT_FALSE(row.currentMode);
    EXPECT_FALSE(row.status);
    const DisplayRow current = rowOf({.currentMode = modeOf(1, 1920, 1080, 59.94, 2)});
    EXPECT_EQ(current.resolution, "3840 × 2160");
    EXPECT_EQ(current.refresh, "60 Hz");
    EXPECT_EQ(rowOf({.currentMode = modeOf(1, 800, 600, 0)}).refresh, "系统未报告");
}

TEST(SnapshotTest, TransportsAreNamedInTheirOrder) {
    EXPECT_EQ(transportLabel({"CC"}), "");
    EXPECT_EQ(transportLabel({}), "");
    EXPECT_EQ(transportLabel({"USB2", "DisplayPort", "XYZ"}), "USB 2.0 数据 · DisplayPort 视频 · XYZ");
    EXPECT_EQ(transportLabel({"CC", "CIO", "USB3"}), "Thunderbolt / USB4 · USB 3 数据");
}

TEST(SnapshotTest, OneSourceOfPowerIsChosenOrNone) {
    const PowerSource pd{.name = "USB-PD"};
    const PowerSource pdNegotiated{.name = "USB-PD", .negotiated = NegotiatedPower{}, .maxPowerW = 60};
    const PowerSource brick{.name = "Brick ID"};
    const PowerSource other{.name = "Other", .negotiated = NegotiatedPower{}};
    const auto chosen = [](const std::vector<PowerSource>& sources) {
        const PowerSource* found = powerSource(sources);
        return found ? static_cast<int>(found - sources.data()) : -1;
    };
    EXPECT_EQ(chosen({}), -1);
    EXPECT_EQ(chosen({brick}), 0);
    EXPECT_EQ(chosen({brick, brick}), -1);
    EXPECT_EQ(chosen({other, pd, brick}), 1) << "the only USB-PD wins over the only negotiated one";
    EXPECT_EQ(chosen({pd, pdNegotiated}), 1);
    EXPECT_EQ(chosen({pdNegotiated, pdNegotiated}), -1);
    EXPECT_EQ(chosen({pd, pd}), -1);
    EXPECT_EQ(chosen({brick, other}), 1);
}

TEST(SnapshotTest, APortBelongsToADisplayOnlyWithoutDoubt) {
    const std::vector<DisplayRow> rows{{.id = 1, .name = "A"}, {.id = 2, .name = "B"}, {.id = 3, .name = "B"}};
    Port toA{.name = "left", .displays = {{.monitorName = "A"}, {.monitorName = "A"}}};
    Port toB{.name = "right", .displays = {{.monitorName = "B"}}};
    ConnectionSnapshot snapshot{.ports = {toB, toA}};
    ASSERT_NE(portForDisplay(rows[0], rows, snapshot), nullptr) << "a port counts once, whatever its links";
    EXPECT_EQ(portForDisplay(rows[0], rows, snapshot)->name, "left");
    EXPECT_EQ(portForDisplay(rows[1], rows, snapshot), nullptr) << "two displays of that name";
    snapshot.ports.push_back(toA);
    EXPECT_EQ(portForDisplay(rows[0], rows, snapshot), nullptr) << "two ports to that display";
}

TEST(SnapshotTest, SpeedsAreShortened) {
    EXPECT_EQ(shortSpeed(std::nullopt), "未知");
    EXPECT_EQ(shortSpeed(""), "未知");
    EXPECT_EQ(shortSpeed("USB 3.2 Gen 2 (10 Gbps)"), "10 Gbps");
    EXPECT_EQ(shortSpeed("Passive"), "Passive");
    EXPECT_EQ(shortSpeed("480Mbps"), "480Mbps");
    EXPECT_EQ(shortSpeed("v1.2.5 Gbps"), "2.5 Gbps");
    EXPECT_EQ(shortSpeed("up to 12.5   Mbps or 40 Gbps"), "12.5   Mbps");
    EXPECT_EQ(shortSpeed("10. Gbps 20 gbps"), "10. Gbps 20 gbps");
}

TEST(SnapshotTest, ReadsEveryField) {
    const auto snapshot = parseSnapshot(R"json({"ports":[{"name":"左侧","connectionActive":true,"videoOnly":false,
        "transports":{"active":["CC","USB3",5]},"charging":{"summary":"Plugged in, charging on hold"},
        "displays":[{"monitorName":"A","branchDevice":"Hub","sinkType":"HDMI","lanes":4,"rate":5.4}],
        "cable":{"maxWatts":100,"speed":"USB4 (40 Gbps)","vendorName":"X","vendorID":1452,"currentRating":"5 A",
                 "maxVolts":20,"certification":{"listings":[{"model":"M"},{}]}},
        "powerSources":[{"name":"USB-PD","negotiated":{"powerW":60,"voltageV":20,"currentA":3},"maxPowerW":96.5}],
        "devices":[{"name":"盘","speed":"10 Gbps"}]}]})json");
    ASSERT_TRUE(snapshot);
    ASSERT_EQ(snapshot->ports.size(), 1U);
    const Port& port = snapshot->ports[0];
    EXPECT_EQ(port.name, "左侧");
    EXPECT_THAT(port.activeTransports, ElementsAre("CC", "USB3"));
    EXPECT_EQ(port.displays.at(0).lanes, 4);
    EXPECT_EQ(port.displays.at(0).rate, "5.4");
    ASSERT_TRUE(port.cable);
    EXPECT_EQ(port.cable->vendorID, 1452U);
    EXPECT_EQ(port.cable->maxVolts, "20");
    EXPECT_THAT(port.cable->listings, ElementsAre("M", std::nullopt));
    EXPECT_EQ(port.powerSources.at(0).negotiated->powerW, 60);
    EXPECT_EQ(port.chargingSummary, "Plugged in, charging on hold");
    EXPECT_EQ(port.devices.at(0).name, "盘");
}

TEST(SnapshotTest, WrongKindsCountAsMissing) {
    for (const char* text : {"", "[]", "5", "null", "{", "{\"ports\":[}", "\"\xff\"", "{\"a\":1e999}"}) {
        EXPECT_FALSE(parseSnapshot(text)) << text;
    }
    const auto snapshot = parseSnapshot(R"({"error":5,"ports":[7,null,[],{"name":5,"connectionActive":"yes",
        "transports":[1],"displays":{"a":1},"cable":null,"powerSources":[{"negotiated":3,"maxPowerW":"9"}],
        "charging":"x","devices":[{"name":{}}]},{"cable":{"vendorID":-5,"maxWatts":true,"speed":[]},
        "displays":[{"lanes":1e300,"monitorName":null}]}]})");
    ASSERT_TRUE(snapshot);
    EXPECT_FALSE(snapshot->error);
    ASSERT_EQ(snapshot->ports.size(), 2U);
    EXPECT_FALSE(snapshot->ports[0].connectionActive);
    EXPECT_FALSE(snapshot->ports[0].name);
    EXPECT_FALSE(snapshot->ports[0].cable);
    EXPECT_FALSE(snapshot->ports[0].powerSources.at(0).negotiated);
    EXPECT_FALSE(snapshot->ports[0].powerSources.at(0).maxPowerW);
    EXPECT_EQ(snapshot->ports[1].cable->vendorID, 0U);
    EXPECT_FALSE(snapshot->ports[1].displays.at(0).lanes);
    const std::string deep(200000, '[');
    EXPECT_FALSE(parseSnapshot(deep));
    EXPECT_TRUE(parseHelperAnswer(deep.substr(0, 5000) + std::string(5000, ']'))->list);
}

TEST(HelperAnswerTest, KnowsListsAndObjects) {
    const auto list = parseHelperAnswer(R"([{"id":7,"uuid":"a"},{"id":"7","uuid":"b"},{"id":-1,"uuid":"c"},
                                            {"id":8},5,{"id":4294967295,"uuid":""}])");
    ASSERT_TRUE(list && list->list);
    ASSERT_EQ(list->list->size(), 2U);
    EXPECT_EQ(list->list->at(0).uuid, "a");
    EXPECT_EQ(list->list->at(1).id, 4294967295U);
    const auto object = parseHelperAnswer(R"({"ok":true,"verified":1,"message":"好"})");
    ASSERT_TRUE(object);
    EXPECT_TRUE(object->ok);
    EXPECT_FALSE(object->verified) << "a number is no truth";
    EXPECT_EQ(object->message, "好");
    EXPECT_FALSE(object->list);
    EXPECT_FALSE(parseHelperAnswer("\"ok\""));
}

TEST(NumberTest, KeepsThePointInEveryLocale) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr); // NOLINT(concurrency-mt-unsafe)
    for (const char* locale : {"C", "de_DE.UTF-8", "fr_FR.UTF-8"}) {
        std::setlocale(LC_NUMERIC, locale); // NOLINT(concurrency-mt-unsafe): as it was when there is none such
        EXPECT_EQ(fixedText(59.94, 2), "59.94");
        EXPECT_EQ(fixedText(-0.5, 1), "-0.5");
        EXPECT_EQ(plainText(96.5), "96.5");
    }
    std::setlocale(LC_NUMERIC, before.c_str()); // NOLINT(concurrency-mt-unsafe)
    EXPECT_EQ(plainText(100), "100");
    EXPECT_EQ(plainText(-0.0), "0");
    EXPECT_EQ(fixedText(1e300, 2).size(), 304U);
}

} // namespace

} // namespace rb
