// What the Screens and connections window costs: a pass over four displays with 200 modes each, the rendering of both
// pages, the helpers, and sitting there open and closed.
// usage: rookbay-screens [--quick]

#include "benchmarks/ProcessCosts.h"
#include "benchmarks/RunBenchmark.h"
#include "benchmarks/Table.h"
#include "desktops/linux/Desktop.h"
#include "desktops/linux/Log.h"
#include "desktops/linux/SingleInstance.h"
#include "desktops/linux/Window.h"
#include "desktops/virtual/Desktop.h"
#include "displays/DisplayController.h"
#include "tests/session/frame/Session.h"
#include "tests/session/frame/Wait.h"

#include <QApplication>
#include <QWidget>

#include <cstdio>
#include <ctime>
#include <stdexcept>

namespace rb {

namespace {

constexpr std::size_t displayCount = 4;
constexpr std::size_t modeCount = 200;
constexpr double inMilliseconds = 1000;

struct Plan {
    int runs = 50;
    double settle = 6; // seconds after the window has come or gone
    double idle = 20;  // seconds watched
};

double cpuMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

std::vector<ConnectedDisplay> manyDisplays() {
    std::vector<ConnectedDisplay> displays;
    for (std::uint32_t id = 1; id <= displayCount; ++id) {
        ConnectedDisplay display{.identity = {.id = id, .vendor = 4268, .model = id, .serial = id},
                                 .name = "DELL U2723QE " + std::to_string(id),
                                 .main = id == 1};
        for (std::size_t mode = 0; mode < modeCount; ++mode) {
            const std::size_t scale = 1 + mode % 2;
            const std::size_t width = 640 + 16 * (mode * 37 % modeCount);
            display.modes.push_back({.modeID = static_cast<std::int32_t>(mode),
                                     .width = width,
                                     .height = width * 9 / 16,
                                     .pixelWidth = width * scale,
                                     .pixelHeight = width * 9 / 16 * scale,
                                     .refreshRate = mode % 3 == 0 ? 59.94 : 60});
        }
        display.currentMode = display.modes[3];
        displays.push_back(std::move(display));
    }
    return displays;
}

std::string snapshotText() {
    std::string ports;
    for (std::size_t id = 1; id <= displayCount; ++id) {
        const std::string number = std::to_string(id);
        ports += (id > 1 ? R"json(,{"name":"USB-C )json" : R"json({"name":"USB-C )json") + number;
        ports += R"json(","connectionActive":true,"transports":{"active":["CC","USB2","DisplayPort"]},)json";
        ports += R"json("displays":[{"monitorName":"DELL U2723QE )json" + number;
        ports += R"json(","lanes":4,"rate":"8.1 Gbps"}],)json";
        ports += R"json("cable":{"speed":"USB4 Gen 3 (40 Gbps)","maxWatts":100,"vendorID":8334},)json";
        ports += R"json("powerSources":[{"name":"USB-PD","maxPowerW":96}],)json";
        ports += R"json("devices":[{"name":"Hub","speed":"480 Mbps"}]})json";
    }
    return R"json({"ports":[)json" + ports + "]}";
}

// The product's own work in a pass whose helpers answer at once: rows, modes, answers, status, and the page as values.
std::vector<double> measurePass(const Plan& plan) {
    VirtualDesktop desktop;
    desktop.displays().set(manyDisplays());
    auto& children = desktop.childProcesses();
    children.install("CableHelper", [snapshot = snapshotText()](VirtualChild& child) {
        child.say(snapshot);
        child.exit();
    });
    children.install("DisplayHelper", [](VirtualChild& child) {
        child.say(child.arguments().at(0) == "list" ? R"([{"id":1,"uuid":"a"},{"id":2,"uuid":"b"},{"id":3,"uuid":"c"}])"
                                                    : R"({"ok":true})");
        child.exit();
    });
    DisplayController controller(desktop.services(), {[] {}, [] {}});
    controller.show();
    desktop.advance(1);
    std::vector<double> times;
    for (int run = 0; run < plan.runs; ++run) {
        const double before = cpuMilliseconds();
        controller.refresh();
        desktop.advance(0.1);
        times.push_back(cpuMilliseconds() - before);
        if (controller.busy() || controller.rows().size() != displayCount ||
            controller.rows()[0].modes.size() != modeCount) {
            throw std::runtime_error("the pass didn't end as it should");
        }
    }
    return times;
}

// A new rendering of the page into the window's widgets, and all of it painted.
std::vector<double> measureRendering(const Plan& plan, LinuxDesktop& desktop, int page) {
    std::vector<DisplayRow> rows;
    for (const ConnectedDisplay& display : manyDisplays()) {
        rows.push_back(rowOf(display));
        rows.back().status = "单屏待机可用";
    }
    const ConnectionSnapshot connections = *parseSnapshot(snapshotText());
    const auto window =
        desktop.services().windows.createWindow({.contentSize = {920, 720}, .title = "benchmark", .dark = true});
    CardPool cards;
    const PageButtonLayers buttons{Layer::create(), Layer::create()};
    const auto render = [&](bool busy) {
        const PageState state{
            .rows = rows, .connections = connections, .busy = busy, .selectedPage = page, .technicalDetails = true};
        window->setContent(windowContent(state, {}, cards, buttons));
    };
    render(false);
    window->makeKeyAndOrderFront();
    QWidget& widget = dynamic_cast<LinuxWindow&>(*window).topLevel();
    std::vector<double> times;
    for (int run = 0; run < plan.runs; ++run) {
        QApplication::processEvents();
        const double before = cpuMilliseconds();
        render(run % 2 == 0); // as at the beginning and the end of a pass
        widget.repaint();
        QApplication::processEvents();
        times.push_back(cpuMilliseconds() - before);
    }
    return times;
}

std::vector<double> measureHelper(const Plan& plan, Session& session, const std::vector<std::string>& command) {
    std::vector<double> times;
    for (int run = 0; run < plan.runs / 5; ++run) {
        const double before = monotonicNow();
        Program& helper = session.start(command);
        if (helper.waitForExit() != 0) {
            throw std::runtime_error(command.front() + " failed: " + helper.output());
        }
        times.push_back((monotonicNow() - before) * inMilliseconds);
    }
    return times;
}

struct Idle {
    std::string cpu;
    std::string wakeUps;
};
Idle watch(const Plan& plan, pid_t process) {
    (void)staysTrue([] { return true; }, plan.settle);
    const ProcessCosts before = costsOf(process);
    const double begin = monotonicNow();
    (void)staysTrue([] { return true; }, plan.idle);
    const ProcessCosts after = costsOf(process);
    const double seconds = monotonicNow() - begin;
    return {summary({(after.cpuSeconds - before.cpuSeconds) * inMilliseconds / seconds}, 3),
            summary({static_cast<double>(after.wakeUps - before.wakeUps) / seconds}, 2)};
}

void measureAll(const Plan& plan) {
    Table table({"", "Rook Bay"});
    table.addRow({"a pass, the product's own work, processor (ms)", summary(measurePass(plan), 2)});
    {
        Session session;
        for (const auto& [name, value] : session.environment) {
            ::setenv(name.c_str(), value.c_str(), 1); // NOLINT(concurrency-mt-unsafe): before there are threads
        }
        LinuxLog log;
        SingleInstance instance(log);
        LinuxDesktop desktop({}, XConnection::open(), instance, log);
        table.addRow({"rendering and painting the page of displays, processor (ms)",
                      summary(measureRendering(plan, desktop, displaysPage), 2)});
        table.addRow({"rendering and painting the page of cables, processor (ms)",
                      summary(measureRendering(plan, desktop, connectionsPage), 2)});
        const std::string helpers = HELPERS_FOLDER;
        table.addRow({"CableHelper, from start to end (ms)",
                      summary(measureHelper(plan, session, {helpers + "/CableHelper"}), 1)});
        table.addRow({"DisplayHelper list, from start to end (ms)",
                      summary(measureHelper(plan, session, {helpers + "/DisplayHelper", "list"}), 1)});
    }
    Session session;
    const Program& program = session.start({ROOKBAY_PROGRAM, "--connections"});
    const auto window = [&] { return session.x().viewableTitled("Rook Bay · 屏幕与连接"); };
    if (!waitUntil([&] { return window().has_value(); })) {
        throw std::runtime_error("the window doesn't come\n" + session.logs());
    }
    const Idle open = watch(plan, program.pid());
    session.x().requestClose(window()->window);
    if (!waitUntil([&] { return !window(); })) {
        throw std::runtime_error("the window doesn't close");
    }
    const Idle closed = watch(plan, program.pid());
    table.addRow({"idle with the window open, processor (ms per s)", open.cpu});
    table.addRow({"idle with the window open, wake-ups (per s)", open.wakeUps});
    table.addRow({"idle with the window closed, processor (ms per s)", closed.cpu});
    table.addRow({"idle with the window closed, wake-ups (per s)", closed.wakeUps});
    std::printf("%s", table.text().c_str());
}

} // namespace

} // namespace rb

int main(int argc, char** argv) {
    const rb::Plan quick{.runs = 10, .settle = 3, .idle = 5};
    return rb::runBenchmark<rb::Plan>(argc, argv, "rookbay-screens", {}, quick, rb::measureAll);
}
