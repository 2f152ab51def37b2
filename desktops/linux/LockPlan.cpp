#include "desktops/linux/LockPlan.h"

namespace rb {

namespace {

LockAttempt program(std::vector<std::string> words) {
    return {.kind = LockAttempt::Kind::Program, .words = std::move(words)};
}

LockAttempt service(const std::string& name, const std::string& path, const std::string& interface,
                    bool takesMessage = false) {
    return {.kind = LockAttempt::Kind::SessionBus,
            .service = name,
            .path = path,
            .interface = interface,
            .takesMessage = takesMessage};
}

LockAttempt logind() {
    return {.kind = LockAttempt::Kind::Logind};
}

// A desktop's own name comes before the shared one: some desktops own the shared one only to keep others from
// locking during films.
std::vector<LockAttempt> services() {
    const std::string shared = "org.freedesktop.ScreenSaver";
    return {service("org.gnome.ScreenSaver", "/org/gnome/ScreenSaver", "org.gnome.ScreenSaver"),
            service("org.cinnamon.ScreenSaver", "/org/cinnamon/ScreenSaver", "org.cinnamon.ScreenSaver", true),
            service("org.mate.ScreenSaver", "/org/mate/ScreenSaver", "org.mate.ScreenSaver"),
            service("org.xfce.ScreenSaver", "/org/xfce/ScreenSaver", "org.xfce.ScreenSaver"),
            service("org.kde.screensaver", "/ScreenSaver", shared),
            service(shared, "/org/freedesktop/ScreenSaver", shared)};
}

// Programs that lock X11 by themselves. Black where the program's own colour would light up the room.
std::vector<LockAttempt> lockers() {
    return {program({"i3lock", "-n", "-c", "000000"}), program({"xsecurelock"}), program({"slock"}),
            program({"xlock", "-mode", "blank"})};
}

} // namespace

std::string LockAttempt::name() const {
    switch (kind) {
    case Kind::Program:
        return words.empty() ? "" : words.front();
    case Kind::SessionBus:
        return service;
    case Kind::Logind:
        break;
    }
    return "logind";
}

std::vector<LockAttempt> lockAttempts(const LockSituation& situation) {
    std::vector<LockAttempt> attempts;
    const auto runs = [&](const char* name) { return situation.running.contains(name); };
    const auto add = [&](LockAttempt attempt) {
        if (attempt.kind != LockAttempt::Kind::Program || situation.programs.contains(attempt.words.front())) {
            attempts.push_back(std::move(attempt));
        }
    };
    for (LockAttempt& candidate : services()) {
        if (situation.busNames.contains(candidate.service)) {
            add(std::move(candidate));
        }
    }
    if (situation.logind && (runs("xss-lock") || runs("light-locker") || runs("swayidle"))) {
        add(logind());
    }
    if (runs("light-locker")) {
        add(program({"light-locker-command", "-l"}));
    }
    if (runs("xscreensaver")) {
        add(program({"xscreensaver-command", "-lock"}));
    }
    if (runs("xautolock")) {
        add(program({"xautolock", "-locknow"}));
    }
    if (situation.desktop) {
        add(program({"xdg-screensaver", "lock"}));
    }
    if (!situation.wayland) {
        for (LockAttempt& candidate : lockers()) {
            add(std::move(candidate));
        }
    }
    add(program({"dm-tool", "lock"}));
    // Last, because nothing tells whether anybody listens.
    if (situation.logind) {
        add(logind());
    }
    return attempts;
}

const std::vector<std::string>& lockPrograms() {
    static const std::vector<std::string> names = {"light-locker-command",
                                                   "xscreensaver-command",
                                                   "xautolock",
                                                   "xdg-screensaver",
                                                   "i3lock",
                                                   "xsecurelock",
                                                   "slock",
                                                   "xlock",
                                                   "dm-tool"};
    return names;
}

const std::vector<std::string>& lockDaemons() {
    static const std::vector<std::string> names = {"xss-lock", "light-locker", "swayidle", "xscreensaver", "xautolock"};
    return names;
}

} // namespace rb
