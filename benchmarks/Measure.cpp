// Measures the program in private desktop sessions, beside the plainest Qt program with a tray icon: how soon its item
// is there, what it costs to have it sit there, and how fast the key locks.
// usage: rookbay-measure [--quick]    fewer and shorter runs

#include "benchmarks/ProcessCosts.h"
#include "benchmarks/RunBenchmark.h"
#include "benchmarks/Table.h"
#include "tests/session/frame/EventLog.h"
#include "tests/session/frame/Session.h"
#include "tests/session/frame/TrayManager.h"
#include "tests/session/frame/Wait.h"

#include <cstdio>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace rb {

namespace {

struct Plan {
    int starts = 15;
    int idleRuns = 3;
    double settle = 10; // seconds after the start before anything is weighed
    double idle = 20;   // seconds watched
    int presses = 20;
};

// Times below are milliseconds.
constexpr double inMilliseconds = 1000;

// Like waitUntil, but often enough for a stopwatch; throws when it waits in vain.
void stopwatchUntil(const std::string& what, const Session& session, const std::function<bool()>& condition) {
    const double end = monotonicNow() + 10;
    while (!condition()) {
        if (monotonicNow() > end) {
            throw std::runtime_error("waited in vain for " + what + "\n" + session.logs());
        }
        timespec pause{0, 200'000};
        nanosleep(&pause, nullptr);
    }
}

// From before the fork to the map of our own menu bar, and on to its first paint.
// Without a window manager, whose frame would be what is mapped.
void measureOwnBar(const Plan& plan, std::vector<double>& mapped, std::vector<double>& painted) {
    Session session({.windowManager = false});
    const std::uint32_t bare = session.x().pixel(3, 3);
    for (int run = 0; run <= plan.starts; ++run) {
        EventLog log(session.display());
        const double start = monotonicNow();
        Program& program = session.start({ROOKBAY_PROGRAM});
        const auto bar = log.waitFor([](const SessionEvent& event) {
            return event.kind == SessionEventKind::Mapped && event.window.instance == "rookbay-menubar";
        });
        stopwatchUntil("the bar", session, [&] { return bar && session.x().pixel(3, 3) != bare; });
        if (run > 0) { // the first one warms the disk's cache
            mapped.push_back((bar->time - start) * inMilliseconds);
            painted.push_back((monotonicNow() - start) * inMilliseconds);
        }
        program.end();
        stopwatchUntil("the bar's end", session, [&] { return session.x().pixel(3, 3) == bare; });
    }
}

std::vector<double> measureXEmbed(const Plan& plan, const std::string& program) {
    Session session;
    TrayManager tray(session.display());
    std::vector<double> times;
    for (int run = 0; run <= plan.starts; ++run) {
        const double start = monotonicNow();
        Program& started = session.start({program});
        stopwatchUntil("the docked icon", session, [&] { return tray.icons().size() == 1; });
        if (run > 0) {
            times.push_back((monotonicNow() - start) * inMilliseconds);
        }
        started.end();
        stopwatchUntil("the icon's end", session, [&] { return tray.icons().empty(); });
    }
    return times;
}

// When the last item registered, as the watcher told; 0 for never.
double lastRegistration(const Program& watcher) {
    double last = 0;
    std::istringstream lines(watcher.output());
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string what;
        std::string service;
        std::string path;
        double time = 0;
        if (words >> what >> service >> path >> time && what == "registered") {
            last = time;
        }
    }
    return last;
}

std::vector<double> measureNotifier(const Plan& plan, const std::string& program) {
    Session session;
    const Program& watcher = session.start({NOTIFIER_HOST, "watch"});
    stopwatchUntil("the watcher", session, [&] { return watcher.output().find("watching") != std::string::npos; });
    std::vector<double> times;
    for (int run = 0; run <= plan.starts; ++run) {
        const double start = monotonicNow();
        Program& started = session.start({program});
        stopwatchUntil("the registration", session, [&] { return lastRegistration(watcher) > start; });
        if (run > 0) {
            times.push_back((lastRegistration(watcher) - start) * inMilliseconds);
        }
        started.end();
    }
    return times;
}

struct IdleCosts {
    std::vector<double> proportional;
    std::vector<double> unshared;
    std::vector<double> cpu;     // milliseconds a second
    std::vector<double> wakeUps; // a second
};

// Alone in a session; a program that has no bar of its own gets a tray.
IdleCosts measureIdle(const Plan& plan, const std::string& program, bool needsTray) {
    IdleCosts costs;
    for (int run = 0; run < plan.idleRuns; ++run) {
        Session session;
        std::unique_ptr<TrayManager> tray;
        if (needsTray) {
            tray = std::make_unique<TrayManager>(session.display());
        }
        const Program& started = session.start({program});
        const auto serveTray = [&] {
            if (tray) {
                tray->icons();
            }
            return true;
        };
        (void)staysTrue(serveTray, plan.settle);
        const ProcessMemory memory = memoryOf(started.pid());
        const ProcessCosts before = costsOf(started.pid());
        const double begin = monotonicNow();
        timespec pause{static_cast<time_t>(plan.idle), 0};
        nanosleep(&pause, nullptr);
        const ProcessCosts after = costsOf(started.pid());
        const double seconds = monotonicNow() - begin;
        costs.proportional.push_back(memory.proportional);
        costs.unshared.push_back(memory.unshared);
        costs.cpu.push_back((after.cpuSeconds - before.cpuSeconds) * inMilliseconds / seconds);
        costs.wakeUps.push_back(static_cast<double>(after.wakeUps - before.wakeUps) / seconds);
    }
    return costs;
}

// From the key's press in the X server to the first instruction of the locker's main.
std::vector<double> measureKey(const Plan& plan) {
    Session session;
    const std::string marks = session.folder() + "/marks";
    session.writeDefaults(std::string(R"({"LinuxLockCommand": ")") + MARKER_LOCKER + " " + marks + "\"}");
    session.start({ROOKBAY_PROGRAM});
    stopwatchUntil("the key", session, [&] { return session.x().isKeyHeld(XKB_KEY_F13); });
    EventLog log(session.display());
    std::vector<double> times;
    for (int press = 0; press < plan.presses; ++press) {
        const double start = monotonicNow();
        session.x().pressKey(XKB_KEY_F13);
        double last = 0;
        stopwatchUntil("the locker", session, [&] {
            std::istringstream lines(readFile(marks).value_or(""));
            for (double mark = 0; lines >> mark;) {
                last = mark;
            }
            return last > start;
        });
        session.x().releaseKey(XKB_KEY_F13);
        times.push_back((last - start) * inMilliseconds);
        // The darkening that follows belongs to this press.
        const auto darkenings = static_cast<std::size_t>(press) + 1;
        stopwatchUntil("the dark screen", session, [&] {
            return log.count([](const SessionEvent& event) { return event.kind == SessionEventKind::SaverOn; }) >=
                   darkenings;
        });
    }
    return times;
}

void measureAll(const Plan& plan) {
    Table table({"", "aim", "Rook Bay", "plain Qt tray icon"});
    std::vector<double> mapped;
    std::vector<double> painted;
    measureOwnBar(plan, mapped, painted);
    table.addRow({"exec to status item, own bar mapped (ms)", "45", summary(mapped, 1), ""});
    table.addRow({"exec to status item, own bar painted (ms)", "", summary(painted, 1), ""});
    table.addRow({"exec to status item, XEmbed tray (ms)", "45", summary(measureXEmbed(plan, ROOKBAY_PROGRAM), 1),
                  summary(measureXEmbed(plan, TRAY_PROGRAM), 1)});
    table.addRow({"exec to status item, notifier (ms)", "45", summary(measureNotifier(plan, ROOKBAY_PROGRAM), 1),
                  summary(measureNotifier(plan, TRAY_PROGRAM), 1)});
    table.addRow({"key press to running locker (ms)", "10", summary(measureKey(plan), 1), ""});
    const IdleCosts ours = measureIdle(plan, ROOKBAY_PROGRAM, false);
    const IdleCosts theirs = measureIdle(plan, TRAY_PROGRAM, true);
    table.addRow(
        {"memory, proportional share (MiB)", "25", summary(ours.proportional, 1), summary(theirs.proportional, 1)});
    table.addRow({"memory, not shared (MiB)", "", summary(ours.unshared, 1), summary(theirs.unshared, 1)});
    table.addRow({"processor while idle (ms per s)", "0.2", summary(ours.cpu, 3), summary(theirs.cpu, 3)});
    table.addRow({"wake-ups while idle (per s)", "2", summary(ours.wakeUps, 2), summary(theirs.wakeUps, 2)});
    std::printf("%s", table.text().c_str());
}

} // namespace

} // namespace rb

int main(int argc, char** argv) {
    const rb::Plan quick{.starts = 5, .idleRuns = 1, .settle = 3, .idle = 5, .presses = 5};
    return rb::runBenchmark<rb::Plan>(argc, argv, "rookbay-measure", {}, quick, rb::measureAll);
}
