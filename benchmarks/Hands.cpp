// Measures what hands feel, in a private desktop session with the program in it: how soon the line opens, what a large
// drop costs, what a drag costs that has nothing to do with the line, a copied photo, a file that moves to another
// disk. usage: rookbay-hands [--quick]    fewer runs

#include "benchmarks/ProcessCosts.h"
#include "benchmarks/Table.h"
#include "tests/session/frame/EventLog.h"
#include "tests/session/frame/Session.h"
#include "tests/session/frame/Wait.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <stdexcept>

namespace rb {

namespace {

namespace fs = std::filesystem;

constexpr double inMilliseconds = 1000;
constexpr int middle = 640;
constexpr int lineHeight = 210;
constexpr int cardHeight = 120;

void pause(double seconds) {
    timespec time{static_cast<time_t>(seconds), static_cast<long>(std::fmod(seconds, 1) * 1e9)};
    nanosleep(&time, nullptr);
}

class Stage {
public:
    explicit Stage(const std::vector<std::string>& hanging) {
        session_.environment["XDG_DATA_HOME"] = session_.folder() + "/data";
        fs::create_directories(session_.folder() + "/data");
        std::string list;
        for (const std::string& path : hanging) {
            list += (list.empty() ? "\"" : ", \"") + path + "\"";
        }
        session_.writeDefaults("{\"ClotheslinePaths\": [" + list + "]}");
        x().movePointer(middle, 600);
        program_ = &session_.start({ROOKBAY_PROGRAM});
        await("the menu bar", [&] { return !x().viewableOfClass("rookbay-menubar").empty(); });
        pause(1);
    }
    Session& session() { return session_; }
    XClient& x() { return session_.x(); }
    pid_t pid() const { return program_->pid(); }
    bool lineShows() { return lineWindow().has_value(); }
    std::optional<WindowFacts> lineWindow() {
        for (const WindowFacts& panel : x().viewableOfClass("rookbay-panel")) {
            if (panel.height == lineHeight) {
                return panel;
            }
        }
        return std::nullopt;
    }
    void await(const std::string& what, const std::function<bool()>& condition, double limit = 20) {
        if (!waitUntil(condition, limit)) {
            throw std::runtime_error("waited in vain for " + what + "\n" + session_.logs());
        }
    }
    void leaveTheLine() {
        x().movePointer(middle, 600);
        await("the line's end", [&] { return !lineShows(); });
        pause(0.3);
    }
    // From now to the map of the line's window.
    double untilTheLineOpens(EventLog& log, double since) {
        const auto mapped = log.waitFor(
            [&](const SessionEvent& event) {
                return event.kind == SessionEventKind::Mapped && event.time > since &&
                       event.window.className == "rookbay-panel" && event.window.height == lineHeight;
            },
            10);
        if (!mapped) {
            throw std::runtime_error("the line didn't open\n" + session_.logs());
        }
        return (mapped->time - since) * inMilliseconds;
    }
    std::size_t hanging() const {
        const QByteArray text = QByteArray::fromStdString(readFile(session_.defaultsFile()).value_or(""));
        return static_cast<std::size_t>(
            QJsonDocument::fromJson(text).object()[QStringLiteral("ClotheslinePaths")].toArray().size());
    }
    std::string lastHanging() const {
        const QByteArray text = QByteArray::fromStdString(readFile(session_.defaultsFile()).value_or(""));
        return QJsonDocument::fromJson(text)
            .object()[QStringLiteral("ClotheslinePaths")]
            .toArray()
            .last()
            .toString()
            .toStdString();
    }
    // Another program's drag has begun at the lower left, the button held.
    void beginDrag(const std::string& uris) {
        if (!source_) {
            writeFile(session_.folder() + "/dragged", uris);
            source_ = &session_.start({DRAGGING_PROGRAM, session_.folder() + "/dragged", "text/uri-list", "cml"});
            await("the other program", [&] { return !x().viewableOfClass("dragging-program").empty(); });
            pause(1);
        }
        const WindowFacts window = x().viewableOfClass("dragging-program").front();
        const int left = window.x + window.width / 2;
        const int top = window.y + window.height / 2;
        x().movePointer(left, top);
        pause(0.1);
        x().pressButton();
        for (int step = 1; step <= 10; ++step) {
            x().movePointer(left + 3 * step, top);
            pause(0.02);
        }
        pause(0.4);
    }

private:
    Session session_{{.compositor = true}};
    Program* program_ = nullptr;
    Program* source_ = nullptr;
};

std::string fileIn(const fs::path& folder, const std::string& name) {
    fs::create_directories(folder);
    writeFile(folder / name, "text");
    return folder / name;
}

std::vector<double> measureHover(Stage& stage, int runs) {
    std::vector<double> times;
    EventLog log(stage.session().display());
    for (int run = 0; run < runs; ++run) {
        const double start = monotonicNow();
        stage.x().movePointer(middle, 2);
        stage.x().sync();
        times.push_back(stage.untilTheLineOpens(log, start));
        stage.leaveTheLine();
    }
    return times;
}

std::vector<double> measureDragToTheTop(Stage& stage, const std::string& uris, int runs) {
    std::vector<double> times;
    EventLog log(stage.session().display());
    for (int run = 0; run < runs; ++run) {
        stage.beginDrag(uris);
        const double start = monotonicNow();
        stage.x().movePointer(middle, 14);
        stage.x().sync();
        times.push_back(stage.untilTheLineOpens(log, start));
        stage.x().movePointer(middle, 600);
        pause(0.2);
        stage.x().releaseButton();
        stage.leaveTheLine();
    }
    return times;
}

struct Costs {
    std::vector<double> cpu;     // milliseconds a second
    std::vector<double> wakeUps; // a second
};

// The pointer circles in the middle of the screen, a hundred steps a second.
void circle(Stage& stage, Costs& costs, double seconds) {
    const ProcessCosts before = costsOf(stage.pid());
    const double begin = monotonicNow();
    for (double now = begin; now - begin < seconds; now = monotonicNow()) {
        const double angle = (now - begin) * 3;
        stage.x().movePointer(middle + static_cast<int>(150 * std::cos(angle)),
                              500 + static_cast<int>(80 * std::sin(angle)));
        pause(0.01);
    }
    const double took = monotonicNow() - begin;
    const ProcessCosts after = costsOf(stage.pid());
    costs.cpu.push_back((after.cpuSeconds - before.cpuSeconds) * inMilliseconds / took);
    costs.wakeUps.push_back(static_cast<double>(after.wakeUps - before.wakeUps) / took);
}

struct Drop {
    double first = 0; // milliseconds to the first card
    double last = 0;  // seconds to the last
    double cpu = 0;   // milliseconds a card
};

Drop measureDrop(int count) {
    Stage stage({});
    std::string uris;
    std::string last;
    for (int i = 0; i < count; ++i) {
        last = fileIn(stage.session().folder() + "/many", "file " + std::to_string(i) + ".txt");
        uris += "file://" + stage.session().folder() + "/many/file%20" + std::to_string(i) + ".txt\r\n";
    }
    stage.beginDrag(uris);
    stage.x().movePointer(middle, 14);
    stage.await("the line", [&] { return stage.lineShows(); });
    pause(0.5);
    const ProcessCosts before = costsOf(stage.pid());
    const double start = monotonicNow();
    stage.x().releaseButton();
    Drop drop;
    stage.await("the first card", [&] { return stage.hanging() >= 1; });
    drop.first = (monotonicNow() - start) * inMilliseconds;
    stage.await(
        "the last card", [&] { return stage.lastHanging() == last; }, 60);
    drop.last = monotonicNow() - start;
    drop.cpu = (costsOf(stage.pid()).cpuSeconds - before.cpuSeconds) * inMilliseconds / count;
    return drop;
}

// From the second at which a click can't become a double one any more to the clipboard's change.
std::vector<double> measurePhotoCopy(int runs) {
    const fs::path folder = fs::temp_directory_path() / ("rookbay-hands-" + std::to_string(getpid()));
    fs::create_directories(folder);
    QImage photo(4000, 3000, QImage::Format_RGB32);
    for (int y = 0; y < photo.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(photo.scanLine(y));
        for (int px = 0; px < photo.width(); ++px) {
            const int grain = (px * 7919 + y * 104'729) % 23;
            row[px] = qRgb((px / 16 + grain) & 255, (y / 12 + grain) & 255, ((px + y) / 28) & 255);
        }
    }
    const std::string file = folder / "photo.jpg";
    photo.save(QString::fromStdString(file), "JPG", 90);
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        Stage stage({file});
        stage.x().movePointer(middle, 2);
        stage.await("the line", [&] { return stage.lineShows(); });
        pause(1);
        stage.x().movePointer(middle, cardHeight);
        pause(0.2);
        const double start = monotonicNow();
        stage.x().click(middle, cardHeight);
        stage.await("the copy", [&] { return stage.x().selectionOwner("CLIPBOARD") != 0; });
        times.push_back((monotonicNow() - start) * inMilliseconds);
    }
    fs::remove_all(folder);
    return times;
}

struct Move {
    double ours = 0;   // seconds
    double theirs = 0; // of mv
};

Move measureMove(std::uintmax_t bytes) {
    const fs::path other = "/dev/shm/rookbay-hands-" + std::to_string(getpid());
    fs::create_directories(other);
    Stage stage({other});
    const std::string file = stage.session().folder() + "/huge.bin";
    const auto make = [&] {
        Program& head =
            stage.session().start({"sh", "-c", "head -c " + std::to_string(bytes) + " /dev/urandom > '" + file + "'"});
        head.waitForExit(60);
    };
    make();
    Move move;
    double start = monotonicNow();
    stage.session().start({"mv", file, other / "theirs"}).waitForExit(60);
    move.theirs = monotonicNow() - start;
    fs::remove(other / "theirs");
    make();
    stage.beginDrag("file://" + file + "\r\n");
    stage.x().movePointer(middle, 14);
    stage.await("the line", [&] { return stage.lineShows(); });
    pause(1);
    stage.x().movePointer(middle, cardHeight);
    pause(0.5);
    start = monotonicNow();
    stage.x().releaseButton();
    stage.await(
        "the move", [&] { return !fs::exists(file); }, 60);
    move.ours = monotonicNow() - start;
    fs::remove_all(other);
    return move;
}

std::string number(double value, int decimals) {
    return summary({value}, decimals).substr(0, summary({value}, decimals).find(' '));
}

void measureAll(bool quick) {
    const int runs = quick ? 3 : 10;
    Table table({"", "aim", "Rook Bay", "for comparison"});
    {
        Stage stage({});
        const std::string uris = "file://" + fileIn(stage.session().folder() + "/files", "a.txt") + "\r\n";
        table.addRow({"pointer at the top edge to the line's window (ms; the rule: 250)", "300",
                      summary(measureHover(stage, runs), 0), ""});
        table.addRow({"file dragged to the top edge to the line's window (ms)", "100",
                      summary(measureDragToTheTop(stage, uris, runs), 0), ""});
        Costs plain;
        Costs dragged;
        for (int run = 0; run < (quick ? 1 : 3); ++run) {
            circle(stage, plain, 4);
            stage.beginDrag(uris);
            circle(stage, dragged, 4);
            stage.x().releaseButton();
            pause(0.5);
        }
        table.addRow({"processor while a file is dragged far from the line (ms per s)", "10", summary(dragged.cpu, 1),
                      summary(plain.cpu, 1) + " while the pointer moves as much without a drag"});
        table.addRow({"wake-ups meanwhile (per s)", "", summary(dragged.wakeUps, 0), summary(plain.wakeUps, 0)});
    }
    const Drop drop = measureDrop(200);
    table.addRow({"drop of 200 files to the first card (ms)", "50", number(drop.first, 0), ""});
    table.addRow({"drop of 200 files to the last card (s; the rule: 15.92)", "16", number(drop.last, 2), ""});
    table.addRow({"processor for each of them (ms)", "", number(drop.cpu, 1), ""});
    table.addRow({"click on a photo of 12 megapixels to the clipboard (ms; the double-click time: 400)", "",
                  summary(measurePhotoCopy(quick ? 1 : 3), 0), ""});
    const Move move = measureMove(1U << 30U);
    table.addRow({"1 GiB to another file system, compared before the source goes (s)", "", number(move.ours, 2),
                  number(move.theirs, 2) + " by mv, which compares nothing"});
    std::printf("%s", table.text().c_str());
}

} // namespace

} // namespace rb

int main(int count, char** words) {
    const bool quick = count == 2 && std::string(words[1]) == "--quick";
    if (count > 2 || (count == 2 && !quick)) {
        std::fprintf(stderr, "usage: rookbay-hands [--quick]\n");
        return 2;
    }
    try {
        rb::measureAll(quick);
        return 0;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 1;
    }
}
