#include "desktops/linux/CommandLine.h"

#include <string_view>

namespace rb {

namespace {

constexpr const char* help = R"(用法：rookbay [选项]
      rookbay hang 文件…
      rookbay new-text [文件夹]

Rook Bay 常驻菜单栏：一键锁屏并关闭显示器，还有晾衣绳、剪贴板历史等小工具。
程序已在运行时，再次启动会打开它的“屏幕与连接”窗口。

命令：
  hang 文件…       把文件或文件夹挂到晾衣绳上
  new-text [文件夹]
                   新建 TXT：在这个文件夹，或文件管理器当前打开的文件夹中

选项：
  --connections    启动后打开“屏幕与连接”窗口
  --restore-screenshot-settings
                   把截图设置恢复成你自己的，然后退出
  --help           显示本说明
  --version        显示版本

设置保存在 $XDG_CONFIG_HOME/rook-bay/defaults.json（默认 ~/.config）。
其中 "LinuxLockCommand" 可指定锁屏命令，例如 "i3lock -n -c 000000"。
)";

int hexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// The path of a file URI of this machine; anything else is a path already.
std::string withoutScheme(const std::string& name) {
    constexpr std::string_view scheme = "file://";
    if (!name.starts_with(scheme)) {
        return name;
    }
    std::string rest = name.substr(scheme.size());
    if (rest.starts_with("localhost/")) {
        rest.erase(0, rest.find('/'));
    }
    std::string path;
    for (std::size_t i = 0; i < rest.size(); ++i) {
        const int high = rest[i] == '%' && i + 2 < rest.size() ? hexDigit(rest[i + 1]) : -1;
        const int low = high >= 0 ? hexDigit(rest[i + 2]) : -1;
        if (low >= 0) {
            path += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            path += rest[i];
        }
    }
    return path;
}

// The running program has another working folder.
std::string absolute(const std::string& name, const std::string& workingFolder) {
    const std::string path = withoutScheme(name);
    return path.starts_with('/') ? path : workingFolder + "/" + path;
}

} // namespace

CommandLine readCommandLine(const std::vector<std::string>& arguments, const std::string& workingFolder) {
    CommandLine line;
    if (!arguments.empty() && arguments.front() == hangCommand) {
        if (arguments.size() == 1) {
            return {.action = CommandLine::Action::Refuse,
                    .text = "rookbay：hang 后面要有文件。用 rookbay --help 查看用法。\n"};
        }
        line.arguments.push_back(hangCommand);
        for (auto file = arguments.begin() + 1; file != arguments.end(); ++file) {
            line.arguments.push_back(absolute(*file, workingFolder));
        }
        return line;
    }
    if (!arguments.empty() && arguments.front() == newTextCommand) {
        if (arguments.size() > 2) {
            return {.action = CommandLine::Action::Refuse,
                    .text = "rookbay：new-text 后面最多一个文件夹。用 rookbay --help 查看用法。\n"};
        }
        line.arguments.push_back(newTextCommand);
        // File managers pass an empty word for a place that is no folder.
        if (arguments.size() == 2 && !arguments[1].empty()) {
            line.arguments.push_back(absolute(arguments[1], workingFolder));
        }
        return line;
    }
    for (const std::string& argument : arguments) {
        if (argument == "--help" || argument == "-h") {
            return {.action = CommandLine::Action::Help, .text = help};
        }
        if (argument == "--restore-screenshot-settings" && arguments.size() == 1) {
            return {.action = CommandLine::Action::RestoreScreenshotSettings};
        }
        if (argument == "--version") {
            return {.action = CommandLine::Action::Version, .text = "Rook Bay " ROOKBAY_VERSION "\n"};
        }
        if (argument != "--connections") {
            return {.action = CommandLine::Action::Refuse,
                    .text = "rookbay：不认识的参数“" + argument + "”。用 rookbay --help 查看用法。\n"};
        }
        line.arguments.push_back(argument);
    }
    return line;
}

} // namespace rb
