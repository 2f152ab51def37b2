#include "tests/session/HostFixture.h"

#include <QJsonArray>
#include <algorithm>
#include <csignal>
#include <filesystem>

// Other people's icons in our own menu bar, and the hider among them: real programs of both kinds.
namespace rb {

namespace {

namespace fs = std::filesystem;

TEST_F(HostTest, IconsOfBothKindsArriveFromRightToLeftAndTheDotHidesThem) {
    startRookBay();
    ASSERT_NO_FATAL_FAILURE(startIcons());
    const auto parcellite = docked("Parcellite");
    const auto yad = docked("Yad");
    ASSERT_TRUE(parcellite && yad);
    EXPECT_EQ(parcellite->x, edge(0) - hostedIcon + 4);
    EXPECT_EQ(yad->x, edge(1) - hostedIcon + 4);

    clickChevron();
    EXPECT_TRUE(waitUntil([this] { return noneShown(); }));
    EXPECT_TRUE(docked("Parcellite")) << "left of the screen, but alive";
    fs::create_directories(SESSION_PICTURES);
    EXPECT_TRUE(saveScreenshot(x(), SESSION_PICTURES "/collapsed.png"));
    clickChevron();
    EXPECT_TRUE(waitUntil([this] { return allShown(); }));
    EXPECT_EQ(docked("Parcellite")->x, parcellite->x) << "in the same order";
    EXPECT_EQ(docked("Yad")->x, yad->x);
    EXPECT_TRUE(saveScreenshot(x(), SESSION_PICTURES "/expanded.png"));
}

TEST_F(HostTest, IconsTakeClicksAndOpenTheirMenus) {
    startRookBay();
    ASSERT_NO_FATAL_FAILURE(startIcons());
    const auto click = [this](int place, std::uint8_t button) {
        x().click(edge(place) - hostedIcon / 2, bar().y + 14, button);
    };
    click(1, 1);
    EXPECT_TRUE(waitUntil([this] { return fs::exists(touched()); })) << "yad ran its command";
    click(0, 3);
    const auto menuOfType = [this](const std::string& type) {
        const auto windows = x().windows();
        return std::any_of(windows.begin(), windows.end(), [&](const WindowFacts& facts) {
            return facts.viewable && std::find(facts.types.begin(), facts.types.end(), type) != facts.types.end();
        });
    };
    EXPECT_TRUE(waitUntil([&] { return menuOfType("_NET_WM_WINDOW_TYPE_POPUP_MENU"); })) << "parcellite's own menu";
    x().tapKey(XKB_KEY_Escape);
    for (const int notifier : {3, 4}) {
        EXPECT_TRUE(waitUntil([this] { return x().viewableOfClass(menuClass).empty(); }));
        click(notifier, 3);
        EXPECT_TRUE(waitUntil([this] { return !x().viewableOfClass(menuClass).empty(); })) << "menu over the bus";
        x().tapKey(XKB_KEY_Escape);
    }
}

TEST_F(HostTest, IconsOutliveUsAndComeBackAtTheNextStart) {
    Program& first = startRookBay();
    ASSERT_NO_FATAL_FAILURE(startIcons());
    const xcb_window_t plain = makeIcon("Plain");
    request(plain);
    ASSERT_TRUE(waitUntil([this] { return isShown("Plain"); }));
    clickChevron();
    ASSERT_TRUE(waitUntil([this] { return noneShown(); }));
    first.signal(SIGKILL);
    ASSERT_TRUE(waitUntil([this] { return x().viewableOfClass(menuBarClass).empty(); }));
    const auto tree =
        ownReply(xcb_query_tree_reply(x().connection(), xcb_query_tree(x().connection(), plain), nullptr));
    ASSERT_TRUE(tree) << "it died with us";
    EXPECT_EQ(tree->parent, x().root());
    EXPECT_FALSE(x().facts(plain)->viewable) << "unmapped, until the next tray comes";
    EXPECT_TRUE(qlipper_->isRunning());

    Program& second = startRookBay();
    EXPECT_TRUE(waitUntil([this] { return allShown(); })) << "expanded, each of them";
    second.end(); // in good order this time
    ASSERT_TRUE(waitUntil([this] { return x().viewableOfClass(menuBarClass).empty(); }));
    startRookBay();
    EXPECT_TRUE(waitUntil([this] { return isShown("Parcellite") && isShown("Yad") && isShown("Cbatticon"); }));
}

TEST_F(HostTest, CollapsesSomeTimeAfterThePointerLeft) {
    settings(R"("MenuBarHiderDelay": 0, "MenuBarHiderCollapseOnLeave": true)");
    startRookBay();
    session().start({"parcellite"});
    x().movePointer(middleOfChevron(), bar().y + 14);
    ASSERT_TRUE(waitUntil([this] { return isShown("Parcellite"); }));
    EXPECT_TRUE(staysTrue([this] { return isShown("Parcellite"); }, 2.5)) << "while the pointer is in the bar";
    const double left = monotonicNow();
    x().movePointer(400, 500);
    ASSERT_TRUE(waitUntil([this] { return !isShown("Parcellite"); }));
    EXPECT_GT(monotonicNow() - left, 0.9);
    EXPECT_LT(monotonicNow() - left, 2.5);

    // An open menu puts it off.
    clickChevron();
    ASSERT_TRUE(waitUntil([this] { return isShown("Parcellite"); }));
    x().click(middleOfChevron(), bar().y + 14, 3);
    ASSERT_TRUE(waitUntil([this] { return !x().viewableOfClass(menuClass).empty(); }));
    x().movePointer(400, 500);
    EXPECT_TRUE(staysTrue([this] { return isShown("Parcellite"); }, 2.5)) << "the menu is open";
    x().tapKey(XKB_KEY_Escape);
    x().movePointer(410, 510);
    EXPECT_TRUE(waitUntil([this] { return !isShown("Parcellite"); }));
}

TEST_F(HostTest, CollapsesAfterTheDelay) {
    settings(R"("MenuBarHiderDelay": 3, "MenuBarHiderCollapseOnLeave": false)");
    const double begin = monotonicNow();
    startRookBay();
    session().start({"parcellite"});
    ASSERT_TRUE(waitUntil([this] { return isShown("Parcellite"); }));
    ASSERT_TRUE(waitUntil([this] { return !isShown("Parcellite"); }));
    EXPECT_GT(monotonicNow() - begin, 2.9);
}

TEST_F(HostTest, SuperDragsAnIconToAnotherPlaceForGood) {
    Program& first = startRookBay();
    session().start({"parcellite"});
    ASSERT_TRUE(waitUntil([this] { return isShown("Parcellite"); }));
    session().start({"yad", "--notification", "--image=dialog-warning"});
    ASSERT_TRUE(waitUntil([this] { return isShown("Yad"); }));
    // To the right of the chevron, past both of our items.
    dragWithSuper(docked("Yad")->x + 11, middleOfChevron() + chevron / 2 + 2);
    const auto yadIsBesideTheStatusItem = [this] {
        const auto yad = docked("Yad");
        return yad && yad->x + 22 + 4 == bar().x + bar().width - endMargin - clockBreadth - statusItem;
    };
    EXPECT_TRUE(waitUntil(yadIsBesideTheStatusItem));
    ASSERT_TRUE(waitUntil([this] { return defaults().contains("LinuxMenuBarOrder"); }));
    const QJsonArray order = defaults()["LinuxMenuBarOrder"].toArray();
    ASSERT_EQ(order.size(), 5);
    EXPECT_EQ(order[0].toString(), "RookBay");
    EXPECT_EQ(order[1].toString(), "Yad");
    EXPECT_EQ(order[2].toString(), "RookBayHiderControl");

    x().click(middleOfChevron() - hostedIcon, bar().y + 14);
    EXPECT_TRUE(waitUntil([this] { return !isShown("Parcellite"); }));
    EXPECT_TRUE(isShown("Yad")) << "right of the dot";
    first.end();
    startRookBay();
    EXPECT_TRUE(waitUntil(yadIsBesideTheStatusItem)) << "remembered by its name";
}

TEST_F(HostTest, TheIntroductionTakesReturnAndGoesAtAPressElsewhere) {
    settings(R"("MenuBarHiderIntroShown": false, "MenuBarHiderDelay": 0)");
    const auto isShown = [this] { return !x().viewableOfClass("rookbay-popover").empty(); };
    startRookBay();
    ASSERT_TRUE(waitUntil(isShown)) << "a second after the first start";
    const WindowFacts bubble = x().viewableOfClass("rookbay-popover").front();
    EXPECT_LE(bubble.x, middleOfChevron());
    EXPECT_GE(bubble.x + bubble.width, middleOfChevron());
    EXPECT_EQ(bubble.y, bar().y + bar().height - 1);
    ASSERT_TRUE(waitUntil([&] { return x().hasFocus(bubble.window); }));
    x().tapKey(XKB_KEY_Return);
    EXPECT_TRUE(waitUntil([&] { return !isShown(); }));
    EXPECT_TRUE(waitUntil([this] { return defaults()["MenuBarHiderIntroShown"].toBool(); }));

    x().click(middleOfChevron(), bar().y + 14, 3);
    ASSERT_TRUE(waitUntil([this] { return !x().viewableOfClass(menuClass).empty(); }));
    x().tapKey(XKB_KEY_Up); // the last item asks for it
    x().tapKey(XKB_KEY_Return);
    ASSERT_TRUE(waitUntil(isShown));
    x().click(300, 500);
    EXPECT_TRUE(waitUntil([&] { return !isShown(); }));
}

TEST_F(HostTest, ADotRightOfTheChevronHidesNothing) {
    startRookBay();
    session().start({"parcellite"});
    ASSERT_TRUE(waitUntil([this] { return isShown("Parcellite"); }));
    dragWithSuper(edge(0) + dot / 2, middleOfChevron() + chevron / 2 + 2);
    x().click(middleOfChevron() - dot, bar().y + 14);
    EXPECT_TRUE(waitUntil([this] { return !x().viewableOfClass("rookbay-panel").empty(); })) << "a notice says why";
    EXPECT_TRUE(staysTrue([this] { return isShown("Parcellite"); }, 0.5));
    ASSERT_TRUE(waitUntil([this] { return defaults()["LinuxMenuBarOrder"].toArray().size() == 4; }));
    EXPECT_EQ(defaults()["LinuxMenuBarOrder"].toArray()[1].toString(), "RookBayHiderSeparator");
}

TEST_F(HostTest, IconsThatMisbehaveHarmNobody) {
    startRookBay();
    xcb_connection_t* client = x().connection();
    ASSERT_TRUE(waitUntil([this] { return x().selectionOwner("_NET_SYSTEM_TRAY_S0") != 0; }));
    request(0);
    request(0x7654321);
    request(x().root());
    request(x().selectionOwner("_NET_SYSTEM_TRAY_S0"));
    request(bar().window);
    const xcb_window_t dying = makeIcon("Dying");
    request(dying);
    xcb_destroy_window(client, dying);

    const xcb_window_t shy = makeIcon("Shy"); // never wants to be mapped, and sends garbage about itself
    const std::uint32_t unmapped[] = {0xFFFFFFFF, 0};
    xcb_change_property(client, XCB_PROP_MODE_REPLACE, shy, x().atom("_XEMBED_INFO"), x().atom("_XEMBED_INFO"), 32, 2,
                        unmapped);
    request(shy);
    const xcb_window_t large = makeIcon("Large");
    request(large);
    request(large);
    ASSERT_TRUE(waitUntil([this] { return isShown("Large"); })) << "cut down to an icon";
    const std::uint32_t size[] = {4000, 3000};
    for (int i = 0; i < 100; ++i) {
        xcb_configure_window(client, large, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size);
    }
    x().sync();
    session().start({"parcellite"});
    ASSERT_TRUE(waitUntil([this] { return isShown("Parcellite"); }));
    EXPECT_TRUE(isShown("Large"));
    EXPECT_EQ(docked("Parcellite")->x, edge(1) - hostedIcon + 4) << "only one of the others takes a place";

    // An icon that leaves by itself makes room; one that dies too.
    xcb_reparent_window(client, large, x().root(), 0, 0);
    EXPECT_TRUE(waitUntil([&] { return docked("Parcellite") && docked("Parcellite")->x == edge(0) - hostedIcon + 4; }));
    xcb_destroy_window(client, shy);
    clickChevron();
    EXPECT_TRUE(waitUntil([this] { return !isShown("Parcellite"); })) << "the bar works";

    // A crowd with names that are none.
    for (int i = 0; i < 80; ++i) {
        const xcb_window_t icon = makeIcon(i % 2 == 0 ? "\xFF\xFE\x01" : "");
        request(icon);
    }
    clickChevron();
    EXPECT_TRUE(waitUntil([this] { return isShown("Parcellite"); }));
    EXPECT_LE(defaults()["LinuxMenuBarOrder"].toArray().size(), 128);
}

// Other programs' icons were drawn for other panels.
TEST_F(HostTest, IconsAsDarkAsTheBarAreMadeVisible) {
    settings(R"("LinuxAppearance": "dark", "MenuBarHiderDelay": 0, "MenuBarHiderCollapseOnLeave": false)");
    startRookBay();
    session().start({NOTIFIER_PROGRAM, "dark"});
    const auto middleOf = [this](int place) { return x().pixel(edge(place) - hostedIcon / 2, bar().y + 13); };
    const auto red = [](std::uint32_t color) { return color >> 16U & 0xFFU; };
    EXPECT_TRUE(waitUntil([&] { return red(middleOf(0)) > 0xC0; })) << "in the bar's own foreground";
    session().start({NOTIFIER_PROGRAM, "colourful"});
    EXPECT_TRUE(waitUntil([&] { return middleOf(1) == 0x103090; })) << "as it is";

    // A window of somebody else's can't be recoloured: what lies behind it can.
    const auto iconWith = [this](const char* name, std::uint32_t color) {
        xcb_connection_t* client = x().connection();
        const xcb_window_t icon = makeIcon(name);
        const std::uint32_t parentRelative = XCB_BACK_PIXMAP_PARENT_RELATIVE;
        xcb_change_window_attributes(client, icon, XCB_CW_BACK_PIXMAP, &parentRelative);
        const xcb_window_t sign = xcb_generate_id(client);
        xcb_create_window(client, XCB_COPY_FROM_PARENT, sign, icon, 6, 6, 10, 10, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &color);
        xcb_map_window(client, sign);
        request(icon);
        return sign;
    };
    iconWith("Dark", 0x151518);
    const xcb_window_t bright = iconWith("Bright", 0xF0D040);
    ASSERT_TRUE(waitUntil([this] { return isShown("Dark") && isShown("Bright"); }));
    const auto behind = [this](const char* name) {
        const auto icon = docked(name);
        return icon ? x().pixel(icon->x + 2, icon->y + 11) : 0;
    };
    EXPECT_TRUE(waitUntil([&] { return red(behind("Dark")) > 0xA0; }, 5)) << "a plate";
    EXPECT_LT(red(behind("Bright")), 0x40U);
    fs::create_directories(SESSION_PICTURES);
    EXPECT_TRUE(saveScreenshot(x(), SESSION_PICTURES "/dark-icons.png"));
    EXPECT_TRUE(staysTrue([&] { return red(behind("Dark")) > 0xA0; }, 2.5)) << "and no flicker";

    // Without a move or anything else that would tell.
    const auto recolour = [&](std::uint32_t color) {
        xcb_change_window_attributes(x().connection(), bright, XCB_CW_BACK_PIXEL, &color);
        xcb_clear_area(x().connection(), 0, bright, 0, 0, 0, 0);
        x().sync();
    };
    recolour(0x151518);
    EXPECT_TRUE(waitUntil([&] { return red(behind("Bright")) > 0xA0; }, 5)) << "it turned dark";
    recolour(0xF0D040);
    EXPECT_TRUE(waitUntil([&] { return red(behind("Bright")) < 0x40; }, 8)) << "and bright again";
}

TEST_F(HostTest, ItemsThatVanishOrHangHarmNobody) {
    startRookBay();
    const auto registerItem = [this](const std::string& argument) {
        Program& sender =
            session().start({"dbus-send", "--session", "--print-reply", "--dest=org.kde.StatusNotifierWatcher",
                             "/StatusNotifierWatcher", "org.kde.StatusNotifierWatcher.RegisterStatusNotifierItem",
                             "string:" + argument});
        return sender.waitForExit();
    };
    ASSERT_TRUE(waitUntil([&] { return registerItem("/gone/at/once") == 0; })) << "the watcher answers";
    for (const char* argument : {"org.nobody.Here", ":1.99999", "/", "not a name at all", ":1.1"}) {
        EXPECT_EQ(registerItem(argument), 0) << argument;
    }
    Program& qlipper = session().start({"qlipper"});
    ASSERT_TRUE(waitUntil([this] { return somethingAt(0); })) << "the first that shows, so beside the dot";
    qlipper.signal(SIGSTOP);
    x().click(edge(0) - hostedIcon / 2, bar().y + 14, 3);
    session().start({"parcellite"});
    ASSERT_TRUE(waitUntil([this] { return isShown("Parcellite"); })) << "nobody waits for one that hangs";
    clickChevron();
    EXPECT_TRUE(waitUntil([this] { return !isShown("Parcellite"); }, 3));
    clickChevron();
    EXPECT_TRUE(waitUntil([this] { return isShown("Parcellite"); }, 3));
    qlipper.signal(SIGKILL);
    EXPECT_TRUE(waitUntil([this] { return docked("Parcellite")->x == edge(0) - hostedIcon + 4; })) << "room again";
}

} // namespace

} // namespace rb
