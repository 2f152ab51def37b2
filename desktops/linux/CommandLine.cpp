#include "desktops/linux/CommandLine.h"

namespace rb {

namespace {

constexpr const char* help = R"(用法：rookbay [选项]

Rook Bay 常驻菜单栏：一键锁屏并关闭显示器，还有晾衣绳、剪贴板历史等小工具。
程序已在运行时，再次启动会打开它的“屏幕与连接”窗口。

选项：
  --connections    启动后打开“屏幕与连接”窗口
  --help           显示本说明
  --version        显示版本

设置保存在 $XDG_CONFIG_HOME/rook-bay/defaults.json（默认 ~/.config）。
其中 "LinuxLockCommand" 可指定锁屏命令，例如 "i3lock -n -c 000000"。
)";

} // namespace

CommandLine readCommandLine(const std::vector<std::string>& arguments) {
    CommandLine line;
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
