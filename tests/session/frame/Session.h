#pragma once

#include "tests/session/frame/Program.h"
#include "tests/session/frame/XClient.h"

#include <list>
#include <memory>
#include <string>
#include <vector>

namespace rb {

// Goes into every settings file that a test writes and that doesn't name it: the menu bar hider has introduced itself
// in an earlier run. Else its bubble takes the keyboard a second after the start.
inline constexpr const char* introShown = "MenuBarHiderIntroShown";
inline constexpr const char* inboxOffered = "ClotheslineInboxOffered";

struct SessionOptions {
    int width = 1280;
    int height = 800;
    int depth = 24;
    bool bus = true;
    bool windowManager = true;
    bool compositor = false;
    // The default keyboard map has no F13; with this the key with code 191 is one.
    bool f13 = true;
    // An X server with two outputs, DUMMY0 (1920 × 1080) and DUMMY1 (off), and many modes, instead of the usual one;
    // width, height and depth don't count.
    bool dummyOutputs = false;
};

// A private desktop session: X server, session bus, window manager and compositor, with a home and XDG folders of its
// own under a temporary folder. Everything that was started in it, directly or not, ends with it.
class Session {
public:
    // Throws std::runtime_error when something doesn't come up.
    explicit Session(const SessionOptions& options = {});
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    // The environment in which its programs run. Tests may change it before they start one.
    Environment environment;

    XClient& x() { return *x_; }
    const std::string& folder() const { return folder_; }
    const std::string& display() const { return display_; }
    std::string configFolder() const { return folder_ + "/config"; }
    std::string defaultsFile() const { return configFolder() + "/rook-bay/defaults.json"; }
    // Writes the settings file as the program itself would have. It always says that nothing needs introducing or
    // asking.
    void writeDefaults(const std::string& json) const;

    // Starts a program in the session; it lives until it ends, or the session does. The log is named after it.
    Program& start(const std::vector<std::string>& command);
    Program& start(const std::vector<std::string>& command, const Environment& environment);
    void startCompositor();
    void endBus();
    // The pids of processes with this name (as in /proc/PID/comm) that were started in the session, directly or by one
    // of its programs.
    std::vector<pid_t> processes(const std::string& name) const;
    // The logs of all programs with their names, for the report of a failure.
    std::string logs() const;

private:
    void startServer(const SessionOptions& options);
    std::string dummyServer() const;
    void awaitManagement();
    void startBus();
    void mapF13();

    std::string folder_;
    std::string display_;
    std::list<Program> programs_;
    Program* bus_ = nullptr;
    std::unique_ptr<XClient> x_;
    int started_ = 0;
};

// Saves what the screen shows as a PNG file; false when it can't.
bool saveScreenshot(const XClient& x, const std::string& file);

} // namespace rb
