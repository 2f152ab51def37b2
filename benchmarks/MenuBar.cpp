// Measures our own menu bar with ten icons of other programs in it, five of each kind: how soon all of them are there,
// how fast the hider is, and what they cost while nothing happens.
// usage: rookbay-menu-bar [--quick]    fewer and shorter runs

#include "benchmarks/ProcessCosts.h"
#include "benchmarks/RunBenchmark.h"
#include "benchmarks/Table.h"
#include "tests/session/frame/Session.h"
#include "tests/session/frame/Wait.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace rb {

namespace {

constexpr int barHeight = 28;
constexpr int ownItems = 8 + 132 + 36 + 22 + 14; // margin, clock, status item, chevron, dot
constexpr int hostedIcon = 30;
constexpr int iconsOfEachKind = 5;
constexpr int icons = 2 * iconsOfEachKind;
constexpr double inMilliseconds = 1000;

struct Plan {
    int starts = 10;
    int flips = 20;
    int idleRuns = 2;
    double idle = 20; // seconds watched
};

void pause(double seconds) {
    const auto whole = static_cast<time_t>(seconds);
    const timespec time{whole, static_cast<long>((seconds - static_cast<double>(whole)) * 1e9)};
    nanosleep(&time, nullptr);
}

class BarSession {
public:
    // Of each kind.
    explicit BarSession(int ofEachKind)
        : session_({.windowManager = false})
        , trayIcons_(static_cast<std::size_t>(ofEachKind)) {
        session_.writeDefaults(R"({"MenuBarHiderDelay": 0, "MenuBarHiderCollapseOnLeave": false})");
        for (int i = 0; i < ofEachKind; ++i) {
            session_.start({NOTIFIER_PROGRAM, "colourful"});
        }
        for (xcb_window_t& icon : trayIcons_) {
            icon = makeIcon();
        }
        pause(1); // until they wait for a bar
    }

    // Seconds from before the fork until all icons are painted.
    double start() {
        const double begin = monotonicNow();
        program_ = &session_.start({ROOKBAY_PROGRAM});
        until("the tray", [this] { return session_.x().selectionOwner("_NET_SYSTEM_TRAY_S0") != 0; });
        for (const xcb_window_t icon : trayIcons_) {
            dock(icon);
        }
        until("the icons", [this] { return shown() == 2 * static_cast<int>(trayIcons_.size()); });
        return monotonicNow() - begin;
    }
    void end() {
        program_->end();
        until("the tray's end", [this] { return session_.x().selectionOwner("_NET_SYSTEM_TRAY_S0") == 0; });
    }

    struct Flip {
        double first = 0; // seconds from the click until the icons are gone, or there
        double last = 0;  // until nothing in the bar changes any more
    };
    Flip flip(bool collapse) {
        constexpr double quiet = 0.4; // longer than the chevron's transition
        const int middle = session_.x().screen().width_in_pixels - ownItems + 14 + 11;
        const double begin = monotonicNow();
        session_.x().click(middle, barHeight / 2);
        Flip flip;
        std::vector<std::uint8_t> before = pixels();
        flip.last = monotonicNow();
        while (monotonicNow() - flip.last < quiet) {
            std::vector<std::uint8_t> now = pixels();
            if (now != before) {
                flip.last = monotonicNow();
                before = std::move(now);
            }
            if (flip.first == 0 && shown() == (collapse ? 0 : icons)) {
                flip.first = monotonicNow() - begin;
            }
            pause(0.0005);
        }
        flip.last -= begin;
        if (flip.first == 0) {
            throw std::runtime_error("the bar didn't " + std::string(collapse ? "collapse" : "expand"));
        }
        return flip;
    }

    void movePointerAway() { session_.x().movePointer(300, 500); }
    pid_t pid() const { return program_->pid(); }

private:
    template <typename Condition>
    void until(const char* what, const Condition& condition) {
        const double end = monotonicNow() + 10;
        while (!condition()) {
            if (monotonicNow() > end) {
                throw std::runtime_error(std::string("waited in vain for ") + what + "\n" + session_.logs());
            }
            pause(0.0005);
        }
    }
    // How many of the places have an icon in their middle.
    int shown() {
        int count = 0;
        for (int place = 0; place < icons; ++place) {
            const int x = session_.x().screen().width_in_pixels - ownItems - place * hostedIcon - hostedIcon / 2;
            const std::uint32_t color = session_.x().pixel(x, 13);
            count += color == 0x103090 || color == 0xC03020 ? 1 : 0;
        }
        return count;
    }
    std::vector<std::uint8_t> pixels() {
        const auto width = static_cast<std::uint16_t>(800);
        const auto left = static_cast<std::int16_t>(session_.x().screen().width_in_pixels - width);
        xcb_connection_t* x = session_.x().connection();
        const auto image = ownReply(xcb_get_image_reply(
            x, xcb_get_image(x, XCB_IMAGE_FORMAT_Z_PIXMAP, session_.x().root(), left, 0, width, barHeight, ~0U),
            nullptr));
        if (!image) {
            return {};
        }
        const std::uint8_t* data = xcb_get_image_data(image.get());
        return {data, data + xcb_get_image_data_length(image.get())};
    }
    xcb_window_t makeIcon() {
        xcb_connection_t* x = session_.x().connection();
        const xcb_window_t icon = xcb_generate_id(x);
        const std::uint32_t color = 0xC03020;
        xcb_create_window(x, XCB_COPY_FROM_PARENT, icon, session_.x().root(), 0, 0, 22, 22, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &color);
        session_.x().sync();
        return icon;
    }
    void dock(xcb_window_t icon) {
        const xcb_window_t tray = session_.x().selectionOwner("_NET_SYSTEM_TRAY_S0");
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = tray;
        message.type = session_.x().atom("_NET_SYSTEM_TRAY_OPCODE");
        message.data.data32[2] = icon;
        xcb_send_event(session_.x().connection(), 0, tray, 0, reinterpret_cast<const char*>(&message));
        session_.x().sync();
    }

    Session session_;
    std::vector<xcb_window_t> trayIcons_;
    Program* program_ = nullptr;
};

struct IdleCosts {
    std::vector<double> cpu;     // milliseconds a second
    std::vector<double> wakeUps; // a second
    std::vector<double> memory;  // MiB
};

IdleCosts measureIdle(const Plan& plan, BarSession& bar) {
    IdleCosts costs;
    bar.movePointerAway();
    pause(5);
    for (int run = 0; run < plan.idleRuns; ++run) {
        const ProcessCosts before = costsOf(bar.pid());
        const double begin = monotonicNow();
        pause(plan.idle);
        const ProcessCosts after = costsOf(bar.pid());
        const double seconds = monotonicNow() - begin;
        costs.cpu.push_back((after.cpuSeconds - before.cpuSeconds) * inMilliseconds / seconds);
        costs.wakeUps.push_back(static_cast<double>(after.wakeUps - before.wakeUps) / seconds);
        costs.memory.push_back(memoryOf(bar.pid()).proportional);
    }
    return costs;
}

void measureAll(const Plan& plan) {
    std::vector<double> starts;
    std::vector<double> gone;
    std::vector<double> back;
    std::vector<double> collapsed;
    std::vector<double> expanded;
    BarSession bar(iconsOfEachKind);
    for (int run = 0; run <= plan.starts; ++run) {
        const double time = bar.start();
        if (run > 0) { // the first one warms the disk's cache
            starts.push_back(time * inMilliseconds);
        }
        if (run < plan.starts) {
            bar.end();
        }
    }
    for (int flip = 0; flip < plan.flips; ++flip) {
        const auto collapse = bar.flip(true);
        gone.push_back(collapse.first * inMilliseconds);
        collapsed.push_back(collapse.last * inMilliseconds);
        const auto expand = bar.flip(false);
        back.push_back(expand.first * inMilliseconds);
        expanded.push_back(expand.last * inMilliseconds);
    }
    const IdleCosts with = measureIdle(plan, bar);
    BarSession empty(0);
    empty.start();
    const IdleCosts without = measureIdle(plan, empty);
    Table table({"", "no icons", "ten icons"});
    table.addRow({"exec to painted icons of other programs (ms)", "", summary(starts, 1)});
    table.addRow({"click to all icons gone (ms)", "", summary(gone, 1)});
    table.addRow({"click to the last frame of collapsing (ms)", "", summary(collapsed, 0)});
    table.addRow({"click to all icons back (ms)", "", summary(back, 1)});
    table.addRow({"click to the last frame of expanding (ms)", "", summary(expanded, 0)});
    table.addRow({"processor while idle (ms per s)", summary(without.cpu, 3), summary(with.cpu, 3)});
    table.addRow({"wake-ups while idle (per s)", summary(without.wakeUps, 1), summary(with.wakeUps, 1)});
    table.addRow({"memory, proportional share (MiB)", summary(without.memory, 1), summary(with.memory, 1)});
    std::printf("%s", table.text().c_str());
}

} // namespace

} // namespace rb

int main(int argc, char** argv) {
    const rb::Plan quick{.starts = 4, .flips = 6, .idleRuns = 1, .idle = 10};
    return rb::runBenchmark<rb::Plan>(argc, argv, "rookbay-menu-bar", {}, quick, rb::measureAll);
}
