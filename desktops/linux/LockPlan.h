#pragma once

#include <set>
#include <string>
#include <vector>

// How this session is locked: a pure decision from what was found in it. Any thread.
namespace rb {

struct LockSituation {
    std::set<std::string> busNames = {}; // names with an owner on the session bus
    std::set<std::string> programs = {}; // of lockPrograms(), those on PATH
    std::set<std::string> running = {};  // of lockDaemons(), those that run for this user
    bool desktop = false;                // a desktop environment calls itself that
    bool logind = false;
    bool wayland = false; // programs for X11 can't lock such a session
};

struct LockAttempt {
    enum class Kind { Program, SessionBus, Logind };
    Kind kind = Kind::Program;
    std::vector<std::string> words = {}; // of a program
    // Of a screen saver service on the session bus, whose method Lock is called.
    std::string service = {};
    std::string path = {};
    std::string interface = {};
    bool takesMessage = false; // Lock wants a text to show

    // How the log names it.
    std::string name() const;
    friend bool operator==(const LockAttempt&, const LockAttempt&) = default;
};

// What is worth trying, best first: the session's own screen saver, then what locks at the session's lock signal,
// then programs that lock by themselves, then whoever may listen to logind.
std::vector<LockAttempt> lockAttempts(const LockSituation& situation);

// Programs and daemons that the decision wants to know of. Daemons by the name that the kernel shows.
const std::vector<std::string>& lockPrograms();
const std::vector<std::string>& lockDaemons();

} // namespace rb
