#include "tests/session/frame/Session.h"

#include "tests/session/frame/Wait.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace rb {

namespace {

namespace fs = std::filesystem;

std::string temporaryFolder() {
    std::string name = (fs::temp_directory_path() / "rookbay-session-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make a temporary folder " + name);
    }
    return name;
}

// What a program of the session takes over from the one who runs the tests: where programs and libraries are, and how
// sanitizers report.
Environment inherited() {
    Environment environment{{"LANG", "C.UTF-8"}};
    for (const char* name : {"PATH", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS"}) {
        if (const char* value = std::getenv(name)) { // NOLINT(concurrency-mt-unsafe): single-threaded here
            environment[name] = value;
        }
    }
    return environment;
}

// The processes whose parent is the given one.
std::vector<pid_t> childrenOf(pid_t parent) {
    std::vector<pid_t> children;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos) {
            continue;
        }
        // "pid (comm) state ppid …"; comm may hold anything, so read behind its last parenthesis.
        const std::string stat = readFile(entry.path() / "stat").value_or("");
        const auto end = stat.rfind(')');
        if (end != std::string::npos && std::atoi(stat.c_str() + end + 4) == parent) {
            children.push_back(std::stoi(name));
        }
    }
    return children;
}

void collectDescendants(pid_t parent, std::vector<pid_t>& found) {
    for (const pid_t child : childrenOf(parent)) {
        found.push_back(child);
        collectDescendants(child, found);
    }
}

} // namespace

Session::Session(const SessionOptions& options)
    : environment(inherited())
    , folder_(temporaryFolder()) {
    // Orphans of the session's programs become this process's children, so that they can be ended with the rest.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    environment["HOME"] = folder_ + "/home";
    environment["XDG_CONFIG_HOME"] = configFolder();
    environment["XDG_DATA_HOME"] = folder_ + "/data";
    environment["XDG_CACHE_HOME"] = folder_ + "/cache";
    environment["XDG_STATE_HOME"] = folder_ + "/state";
    environment["XDG_RUNTIME_DIR"] = folder_ + "/runtime";
    environment["NO_AT_BRIDGE"] = "1";
    for (const char* name : {"home", "home/Desktop", "config", "data", "cache", "state", "runtime", "logs"}) {
        fs::create_directory(fs::path(folder_) / name);
        fs::permissions(fs::path(folder_) / name, fs::perms::owner_all);
    }
    writeDefaults("{}");
    startServer(options);
    if (options.bus) {
        startBus();
    }
    if (options.windowManager) {
        start({"openbox", "--sm-disable"});
        if (!waitUntil([this] { return !x_->cardinals(x_->root(), "_NET_SUPPORTING_WM_CHECK").empty(); })) {
            throw std::runtime_error("the window manager doesn't come up\n" + logs());
        }
        awaitManagement();
    }
    if (options.compositor) {
        startCompositor();
    }
    if (options.f13) {
        mapF13();
    }
}

Session::~Session() {
    // Clients first, the server last, so that nobody complains of a lost connection.
    while (programs_.size() > 1) {
        programs_.pop_back();
    }
    x_.reset();
    programs_.clear();
    for (const pid_t orphan : childrenOf(::getpid())) {
        ::kill(orphan, SIGKILL);
        ::waitpid(orphan, nullptr, 0);
    }
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

void Session::startServer(const SessionOptions& options) {
    // The server writes its number to a descriptor; a shell gives it a file, which needs no pipe to be watched.
    const std::string number = folder_ + "/display";
    const std::string screen =
        std::to_string(options.width) + "x" + std::to_string(options.height) + "x" + std::to_string(options.depth);
    // Key repeats come soon and fast, so that tests of held keys are short.
    const std::string server = options.dummyOutputs ? dummyServer() : "Xvfb -screen 0 " + screen;
    start({"sh", "-c",
           "exec " + server + " -displayfd 3 -nolisten tcp -noreset -ardelay 150 -arinterval 30 3>" + number});
    if (!waitUntil([&] { return readFile(number).value_or("").find('\n') != std::string::npos; }, 10)) {
        throw std::runtime_error("the X server doesn't come up\n" + logs());
    }
    std::istringstream stream(*readFile(number));
    stream >> display_;
    display_.insert(0, ":");
    environment["DISPLAY"] = display_;
    x_ = std::make_unique<XClient>(display_);
}

std::string Session::dummyServer() const {
    const std::string config = folder_ + "/xorg.conf";
    writeFile(config, R"(Section "Device"
  Identifier "device"
  Driver "dummy"
  VideoRam 256000
EndSection
Section "Monitor"
  Identifier "monitor"
  HorizSync 5-1000
  VertRefresh 5-300
  Modeline "1920x1080" 148.50 1920 2008 2052 2200 1080 1084 1089 1125
  Modeline "1280x720" 74.25 1280 1390 1430 1650 720 725 730 750
EndSection
Section "Screen"
  Identifier "screen"
  Device "device"
  Monitor "monitor"
  DefaultDepth 24
  SubSection "Display"
    Depth 24
    Modes "1920x1080" "1280x720"
    Virtual 3840 2160
  EndSubSection
EndSection
)");
    return "/usr/lib/xorg/Xorg -config " + config + " -novtswitch -sharevts -logfile " + folder_ + "/logs/xorg.log";
}

// A window manager that announces itself already may still lose the requests that reach it while it starts.
void Session::awaitManagement() {
    xcb_connection_t* x = x_->connection();
    const xcb_window_t probe = xcb_generate_id(x);
    xcb_create_window(x, XCB_COPY_FROM_PARENT, probe, x_->root(), 0, 0, 50, 50, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    const bool managed = waitUntil([&] {
        constexpr double whileItMaps = 0.5;
        xcb_map_window(x, probe);
        xcb_flush(x);
        return waitUntil([&] { return !x_->cardinals(probe, "WM_STATE").empty() && x_->facts(probe)->viewable; },
                         whileItMaps);
    });
    if (!managed) {
        throw std::runtime_error("the window manager manages nothing\n" + logs());
    }
    xcb_destroy_window(x, probe);
    x_->sync();
}

void Session::startBus() {
    const std::string address = folder_ + "/bus-address";
    bus_ = &start({"sh", "-c",
                   "exec dbus-daemon --session --nofork --nopidfile --print-address=3 --address=unix:path=" + folder_ +
                       "/runtime/bus 3>" + address});
    if (!waitUntil([&] { return readFile(address).value_or("").find('\n') != std::string::npos; })) {
        throw std::runtime_error("the session bus doesn't come up\n" + logs());
    }
    const std::string line = *readFile(address);
    environment["DBUS_SESSION_BUS_ADDRESS"] = line.substr(0, line.find('\n'));
}

void Session::endBus() {
    bus_->end();
}

void Session::startCompositor() {
    start({"picom", "--backend", "xrender", "--config", "/dev/null"});
    if (!waitUntil([this] { return x_->selectionOwner("_NET_WM_CM_S0") != 0; })) {
        throw std::runtime_error("the compositor doesn't come up\n" + logs());
    }
}

void Session::mapF13() {
    if (start({"xmodmap", "-e", "keycode 191 = F13"}).waitForExit() != 0) {
        throw std::runtime_error("xmodmap failed\n" + logs());
    }
}

void Session::writeDefaults(const std::string& json) const {
    // Not the first run: nobody is introduced to anything, or asked, in the middle of something else.
    std::string text = json;
    for (const std::string key : {introShown, inboxOffered}) {
        if (text.starts_with('{') && text.ends_with('}') && text.find(key) == std::string::npos) {
            const bool empty = text.find_first_not_of(" \n}", 1) == std::string::npos;
            text.insert(1, '"' + key + (empty ? "\": true" : "\": true, "));
        }
    }
    const fs::path file = defaultsFile();
    fs::create_directories(file.parent_path());
    fs::permissions(file.parent_path(), fs::perms::owner_all);
    writeFile(file, text);
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
}

Program& Session::start(const std::vector<std::string>& command) {
    return start(command, environment);
}

Program& Session::start(const std::vector<std::string>& command, const Environment& itsEnvironment) {
    const std::string name = fs::path(command.front()).filename();
    return programs_.emplace_back(command, itsEnvironment,
                                  folder_ + "/logs/" + std::to_string(++started_) + "-" + name + ".log");
}

std::vector<pid_t> Session::processes(const std::string& name) const {
    std::vector<pid_t> found;
    collectDescendants(::getpid(), found);
    std::erase_if(found, [&](pid_t pid) {
        const std::string folder = "/proc/" + std::to_string(pid);
        const bool zombie = readFile(folder + "/stat").value_or(") Z").find(") Z") != std::string::npos;
        return zombie || readFile(folder + "/comm").value_or("") != name + "\n";
    });
    return found;
}

std::string Session::logs() const {
    std::string all;
    for (const auto& entry : fs::directory_iterator(folder_ + "/logs")) {
        const std::string text = readFile(entry.path()).value_or("");
        if (!text.empty()) {
            all += "--- " + entry.path().filename().string() + "\n" + text;
        }
    }
    return all;
}

} // namespace rb
