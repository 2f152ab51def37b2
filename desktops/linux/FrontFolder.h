#pragma once

#include "platform/FrontFolder.h"
#include "platform/Handle.h"

#include <map>
#include <string>
#include <vector>

namespace rb {

class XConnection;

// The folder of the frontmost file manager window, as far as file managers tell: on the session bus (FileManager1's
// list of windows with their locations), else in a title that names the whole path.
class LinuxFrontFolder final : public FrontFolder {
public:
    // Window identifiers as the file manager knows them, each with its tabs' addresses, the visible tab first.
    using Locations = std::map<std::string, std::vector<std::string>>;

    struct FileManagerWindow {
        std::string objectPath = {}; // as the file manager exports it; empty for those that don't
        std::string title = {};
    };

    explicit LinuxFrontFolder(XConnection& connection)
        : connection_(connection) {}

    void ask(std::function<void(const Answer&)> answer) override;

    // The decision. `windows` are the file managers' on the screen, frontmost first; `locations` is nothing when no
    // file manager told any. `desktop` is the Desktop folder.
    static Answer decide(const std::vector<FileManagerWindow>& windows, const Locations* locations,
                         const std::string& desktop);

private:
    std::vector<FileManagerWindow> windows();
    std::string text(unsigned window, const char* property);

    XConnection& connection_;
    Lifetime lifetime_;
};

} // namespace rb
