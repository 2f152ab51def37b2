#include "desktops/linux/QuickActionFiles.h"

#include "desktops/linux/CommandLine.h"
#include "desktops/linux/Folders.h"

namespace rb {

namespace {

constexpr const char* title = "新建 TXT（Rook Bay）";
constexpr const char* comment = "在这个文件夹中新建一个空的 TXT 文件";
// Stands at the beginning of a line of each of our files, as a key or in a comment.
constexpr std::string_view marker = "X-RookBay-Version=";
constexpr unsigned plainFile = 0644;
constexpr unsigned program = 0755;

bool isPlain(const std::string& word) {
    constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._+-";
    return !word.empty() && word.find_first_not_of(plain) == std::string::npos;
}

// Nautilus and Caja run any program of a folder and tell it in the environment what is selected.
std::string script(const std::string& prefix, const std::string& command) {
    return "#!/bin/sh\n"
           "# " +
           std::string(marker) + quickActionVersionOf(command) +
           "\n"
           "# Written by Rook Bay, which replaces it when its version changes.\n"
           "folder=$(printf '%s' \"$" +
           prefix +
           "_SCRIPT_SELECTED_FILE_PATHS\" | head -n 1)\n"
           "if [ -z \"$folder\" ] || [ ! -d \"$folder\" ]; then\n"
           "    folder=$" +
           prefix +
           "_SCRIPT_CURRENT_URI\n"
           "fi\n"
           "exec " +
           shellWord(command) + " " + newTextCommand + " \"$folder\"\n";
}

std::string nemoAction(const std::string& command, const char* selection, const char* folder) {
    return "[Nemo Action]\n"
           "Name=" +
           std::string(title) + "\nComment=" + comment + "\nExec=" + execWord(command) + " " + newTextCommand + " " +
           folder + "\nIcon-Name=rookbay\nSelection=" + selection +
           "\nExtensions=" + (std::string_view(selection) == "none" ? "any" : "dir") + ";\nQuote=double\n" +
           std::string(marker) + quickActionVersionOf(command) + "\n";
}

std::string pcmanfmAction(const std::string& command) {
    return "[Desktop Entry]\n"
           "Type=Action\n"
           "Name=" +
           std::string(title) + "\nTooltip=" + comment + "\nIcon=rookbay\nTargetLocation=true\nProfiles=folder;\n" +
           std::string(marker) + quickActionVersionOf(command) +
           "\n\n"
           "[X-Action-Profile folder]\n"
           "MimeTypes=inode/directory;\n"
           "SelectionCount==1\n"
           "Exec=" +
           execWord(command) + " " + newTextCommand + " %f\n";
}

std::string dolphinMenu(const std::string& command) {
    return "[Desktop Entry]\n"
           "Type=Service\n"
           "ServiceTypes=KonqPopupMenu/Plugin\n"
           "MimeType=inode/directory;\n"
           "X-KDE-RequiredNumberOfUrls=1\n"
           "Actions=newText;\n" +
           std::string(marker) + quickActionVersionOf(command) +
           "\n\n"
           "[Desktop Action newText]\n"
           "Name=" +
           title + "\nIcon=rookbay\nExec=" + execWord(command) + " " + newTextCommand + " %f\n";
}

} // namespace

std::string shellWord(const std::string& word) {
    if (isPlain(word)) {
        return word;
    }
    std::string quoted = "'";
    for (const char c : word) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

std::string execWord(const std::string& word) {
    if (isPlain(word)) {
        return word;
    }
    // Quoted for the Exec line, whose backslashes the file's own quoting doubles; a percent sign is a field code.
    std::string quoted = "\"";
    for (const char c : word) {
        if (c == '"' || c == '`' || c == '$') {
            quoted += "\\\\";
        } else if (c == '\\') {
            quoted += "\\\\\\";
        } else if (c == '%') {
            quoted += '%';
        }
        quoted += c;
    }
    return quoted + "\"";
}

std::string quickActionVersionOf(const std::string& command) {
    return ROOKBAY_VERSION " " + command;
}

std::optional<std::string> quickActionVersion(std::string_view text) {
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        std::string_view line = text.substr(start, end - start);
        start = end + 1;
        if (line.starts_with("# ")) {
            line.remove_prefix(2);
        }
        if (line.starts_with(marker)) {
            return std::string(line.substr(marker.size()));
        }
    }
    return std::nullopt;
}

std::vector<QuickActionFile> quickActionFiles(const std::string& command) {
    const std::string data = dataHome();
    return {
        {"nautilus", data + "/nautilus/scripts/" + title, script("NAUTILUS", command), program},
        {"caja", configHome() + "/caja/scripts/" + title, script("CAJA", command), program},
        {"nemo", data + "/nemo/actions/rookbay-new-text.nemo_action", nemoAction(command, "none", "%P"), plainFile},
        {"nemo", data + "/nemo/actions/rookbay-new-text-in-folder.nemo_action", nemoAction(command, "s", "%F"),
         plainFile},
        {"pcmanfm-qt", data + "/file-manager/actions/rookbay-new-text.desktop", pcmanfmAction(command), plainFile},
        // A service menu in the user's own folder is only believed when it may be run.
        {"dolphin", data + "/kio/servicemenus/rookbay-new-text.desktop", dolphinMenu(command), program},
    };
}

} // namespace rb
