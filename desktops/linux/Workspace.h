#pragma once

#include "platform/Handle.h"
#include "platform/Workspace.h"

namespace rb {

class Log;

// Other programs by the session's own means: xdg-open for files and addresses, the default program for plain text,
// and the file manager on the session bus for showing files. What can't be started is logged.
class LinuxWorkspace final : public Workspace {
public:
    explicit LinuxWorkspace(Log& log)
        : log_(log) {}

    void openFile(const std::string& path, Done done) override;
    void openInTextEditor(const std::string& path, Done done) override;
    void openURL(const std::string& url) override;
    // Where no file manager answers on the bus, the folder of the first file is opened.
    void revealFiles(const std::vector<std::string>& paths) override;

private:
    // Starts a program that hands something over. Some of them stay until the other program ends: one that still runs
    // after a while has done its part.
    void handOver(const std::vector<std::string>& words, Done done);
    void openParent(const std::string& path);

    Log& log_;
    Lifetime lifetime_;
};

} // namespace rb
