// Measures how long it takes from the click on "检查更新…" to the start of the check, with feeds on this machine that
// are alive, dead or mixed: the real choice of the feed and the real helper processes.
// usage: rookbay-feed-probe [RUNS]

#include "app/UpdateFeed.h"
#include "benchmarks/Table.h"
#include "desktops/linux/URLSessions.h"
#include "desktops/virtual/Desktop.h"
#include "desktops/virtual/Replacements.h"
#include "tests/update/FeedServer.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace rb {

namespace {

// Notes when a check starts.
class NotingUpdates final : public Updates {
public:
    std::unique_ptr<Updater> startUpdater(UpdaterDelegate&) override { return std::make_unique<Noting>(*this); }
    bool started = false;

private:
    class Noting final : public Updater {
    public:
        explicit Noting(NotingUpdates& owner)
            : owner_(owner) {}
        void checkForUpdates() override { owner_.started = true; }

    private:
        NotingUpdates& owner_;
    };
};

// Milliseconds from the click to the check.
double measure(const std::string& primary, const std::string& mirror) {
    VirtualDesktop desktop;
    desktop.application().setInfoString("SUFeedURL", primary);
    desktop.application().setInfoString("SUPublicEDKey", "key");
    desktop.application().setInfoString("RBMirrorFeedURL", mirror);
    NotingUpdates updates;
    LinuxURLSessions sessions;
    const Desktop services = withReplaced(desktop.services(), {.updates = &updates, .urlSessions = &sessions});
    UpdateFeed feed(services);
    feed.startUpdater();
    QElapsedTimer clock;
    clock.start();
    feed.checkForUpdatesFromMenu();
    while (!updates.started) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

} // namespace

} // namespace rb

int main(int count, char** words) {
    QCoreApplication application(count, words);
    const int runs = count > 1 ? std::atoi(words[1]) : 10;
    rb::FeedServer server;
    server.serve("/feed", "<rss version=\"2.0\"></rss>");
    server.serve("/page", "<html></html>");
    server.on("/dead", [](QTcpSocket&) {});
    const std::string alive = server.address("/feed");
    const std::string dead = server.address("/dead");
    const std::string refused = "http://127.0.0.1:1/feed";
    struct Case {
        const char* name;
        std::string primary;
        std::string mirror;
        int runs;
    };
    rb::Table table({"feeds", "from the click to the check (ms)"});
    for (const Case& measured :
         std::vector<Case>{{"both alive", alive, alive, runs},
                           {"primary silent, mirror alive", dead, alive, runs},
                           {"primary refuses, mirror alive", refused, alive, runs},
                           {"primary a page, mirror alive", server.address("/page"), alive, runs},
                           {"both refuse", refused, refused, runs},
                           {"both silent", dead, dead, 2}}) {
        std::vector<double> times;
        for (int run = 0; run < measured.runs; ++run) {
            times.push_back(rb::measure(measured.primary, measured.mirror));
        }
        table.addRow({measured.name, rb::summary(times, 0)});
    }
    std::fputs(table.text().c_str(), stdout);
    return 0;
}
