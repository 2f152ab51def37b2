#include "desktops/linux/CommandLine.h"

namespace rb {

namespace {

constexpr const char* help = R"(用法：rookbay [选项]
      rookbay hang 文件…

Rook Bay 常驻菜单栏：一键锁屏并关闭显示器，还有晾衣绳、剪贴板历史等小工具。
程序已在运行时，再次启动会打开它的“屏幕与连接”窗口。

命令：
  hang 文件…       把文件或文件夹挂到晾衣绳上

选项：
  --connections    启动后打开“屏幕与连接”窗口
  --help           显示本说明
  --version        显示版本

设置保存在 $XDG_CONFIG_HOME/rook-bay/defaults.json（默认 ~/.config）。
其中 "LinuxLockCommand" 可指定锁屏命令，例如 "i3lock -n -c 000000"。
)";

} // namespace

CommandLine readCommandLine(const std::vector<std::string>& arguments, const std::string& workingFolder) {
    CommandLine line;
    if (!arguments.empty() && arguments.front() == hangCommand) {
        if (arguments.size() == 1) {
            return {.action = CommandLine::Action::Refuse,
                    .text = "rookbay：hang 后面要有文件。用 rookbay --help 查看用法。\n"};
        }
        // The running program has another working folder.
        line.arguments.push_back(hangCommand);
        for (auto file = arguments.begin() + 1; file != arguments.end(); ++file) {
            line.arguments.push_back(file->starts_with('/') ? *file : workingFolder + "/" + *file);
        }
        return line;
    }
    for (const std::string& argument : arguments) {
        if (argument == "--help" || argument == "-h") {
            return {.action = CommandLine::Action::Help, .text = help};
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
