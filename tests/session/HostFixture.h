#pragma once

#include "tests/session/SessionTest.h"

#include <optional>
#include <string>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace rb {

// Other people's icons in our own menu bar. Nothing collapses by itself unless a test wants it to.
class HostTest : public SessionTest {
protected:
    static constexpr int endMargin = 8;
    static constexpr int clockBreadth = 132;
    static constexpr int statusItem = 36;
    static constexpr int chevron = 22;
    static constexpr int dot = 14;
    static constexpr int hostedIcon = 30;

    HostTest() { settings(R"("MenuBarHiderDelay": 0, "MenuBarHiderCollapseOnLeave": false)"); }

    void settings(const std::string& json) { session().writeDefaults("{" + json + "}"); }

    WindowFacts bar() {
        const auto found = x().viewableOfClass(menuBarClass);
        return found.empty() ? WindowFacts{} : found.front();
    }
    // The right edge of what stands left of our own three items, `icons` further to the left.
    int edge(int icons) {
        return bar().x + bar().width - endMargin - clockBreadth - statusItem - chevron - dot - icons * hostedIcon;
    }
    int middleOfChevron() { return bar().x + bar().width - endMargin - clockBreadth - statusItem - chevron / 2; }
    void clickChevron() { x().click(middleOfChevron(), bar().y + 14); }

    // The window of a docked icon, at the place where it shows; nothing while it isn't in the bar's window.
    std::optional<WindowFacts> docked(const std::string& className) {
        const WindowFacts strip = bar();
        for (const WindowFacts& found : x().viewableOfClass(className)) {
            if (found.width == 22 && found.y >= strip.y && found.y < strip.y + strip.height) {
                return found;
            }
        }
        return std::nullopt;
    }
    bool isShown(const std::string& className) {
        const auto icon = docked(className);
        return icon && icon->x >= bar().x;
    }
    // Whether something is drawn in the place of that number, 0 beside the dot.
    bool somethingAt(int place) {
        const int right = edge(place);
        const std::uint32_t ground = x().pixel(right - hostedIcon, 2);
        for (int column = right - hostedIcon + 5; column < right - 5; column += 2) {
            for (int row = 5; row < 23; row += 3) {
                if (x().pixel(column, row) != ground) {
                    return true;
                }
            }
        }
        return false;
    }
    // Starts three tray icons and two notifier items, one after the other.
    void startIcons() {
        session().start({"parcellite"});
        ASSERT_TRUE(waitUntil([this] { return isShown("Parcellite"); })) << "parcellite";
        session().start({"yad", "--notification", "--image=dialog-warning", "--command=touch " + touched()});
        ASSERT_TRUE(waitUntil([this] { return isShown("Yad"); })) << "yad";
        session().start({"cbatticon"});
        ASSERT_TRUE(waitUntil([this] { return isShown("Cbatticon"); })) << "cbatticon";
        qlipper_ = &session().start({"qlipper"});
        ASSERT_TRUE(waitUntil([this] { return somethingAt(3); })) << "qlipper";
        session().start({"diodon"});
        ASSERT_TRUE(waitUntil([this] { return somethingAt(4); })) << "diodon";
    }
    std::string touched() { return session().folder() + "/touched"; }
    bool allShown() {
        // Where there is no theme of icons, two of them draw nothing.
        return isShown("Parcellite") && isShown("Yad") && isShown("Cbatticon") && drawn() >= 3;
    }
    int drawn() {
        int places = 0;
        for (int place = 0; place < 5; ++place) {
            places += somethingAt(place) ? 1 : 0;
        }
        return places;
    }
    bool noneShown() { return drawn() == 0 && !isShown("Parcellite") && !isShown("Yad") && !isShown("Cbatticon"); }
    void dragWithSuper(int from, int to) {
        const int y = bar().y + 14;
        x().movePointer(from, y);
        x().pressKey(XKB_KEY_Super_L);
        x().pressButton();
        for (int step = 1; step <= 10; ++step) {
            x().movePointer(from + (to - from) * step / 10, y);
        }
        x().releaseButton();
        x().releaseKey(XKB_KEY_Super_L);
        x().sync();
    }

    // A bare client of the tray, under the test's own control.
    xcb_window_t makeIcon(const char* name) {
        const xcb_window_t made = xcb_generate_id(x().connection());
        xcb_create_window(x().connection(), XCB_COPY_FROM_PARENT, made, x().root(), 0, 0, 300, 200, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        const std::string text = std::string(name) + '\0' + name + '\0';
        xcb_change_property(x().connection(), XCB_PROP_MODE_REPLACE, made, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
        return made;
    }
    void request(xcb_window_t icon) {
        const xcb_window_t tray = x().selectionOwner("_NET_SYSTEM_TRAY_S0");
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = tray;
        message.type = x().atom("_NET_SYSTEM_TRAY_OPCODE");
        message.data.data32[2] = icon;
        xcb_send_event(x().connection(), 0, tray, 0, reinterpret_cast<const char*>(&message));
        x().sync();
    }

    Program* qlipper_ = nullptr;
};

} // namespace rb
