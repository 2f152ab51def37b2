#pragma once

#include <functional>
#include <string>
#include <vector>

namespace rb {

// Handing files and addresses to other programs. Paths are absolute, UTF-8. Nothing here waits for the other program.
// Main thread only.
class Workspace {
public:
    // Told once, on the main thread in a later turn: whether a program took it. May be empty.
    using Done = std::function<void(bool opened)>;

    virtual ~Workspace() = default;
    // With the user's program for its kind; folders open in the file manager.
    virtual void openFile(const std::string& path, Done done) = 0;
    // With the system's own editor for plain text; false as well where there is none.
    virtual void openInTextEditor(const std::string& path, Done done) = 0;
    virtual void openURL(const std::string& url) = 0;
    // Shows the files, selected, in the file manager.
    virtual void revealFiles(const std::vector<std::string>& paths) = 0;
};

} // namespace rb
