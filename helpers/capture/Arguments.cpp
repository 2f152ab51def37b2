#include "helpers/capture/Arguments.h"

#include <charconv>
#include <cmath>
#include <map>
#include <string_view>
#include <utility>

namespace rb {

namespace {

constexpr double longestDelay = 3600; // seconds

constexpr const char* help = R"(用法：rookbay-capture [选项]

截取屏幕，并按 Rook Bay 的截图设置保存。不带选项时截取鼠标所在的整个屏幕。

截取什么：
  --region         拖动选择一个区域（空格改选窗口，Esc 或右键取消）
  --window         点按选择一个窗口（空格改选区域，Esc 或右键取消）
  --active-window  当前窗口
  --all-displays   所有屏幕，合成一张图片

选项：
  --delay 秒       等待若干秒后再截取，0 至 3600
  --clipboard      拷贝到剪贴板，不存为文件
  --output 路径    存为这个文件，或存到这个文件夹；绝不覆盖已有的文件
  --help           显示本说明
  --version        显示版本

保存后打印文件的路径。选择区域时：按住空格移动选区，方向键逐像素移动鼠标，回车确认。
退出码：0 已截取；1 失败；2 用法错误；3 已取消；4 另一次截图正在进行。

设置在 $XDG_CONFIG_HOME/rook-bay/screencapture.json（默认 ~/.config）。
)";

CaptureArguments refuse(const std::string& reason) {
    return {.action = CaptureArguments::Action::Refuse,
            .text = "rookbay-capture：" + reason + "。用 rookbay-capture --help 查看用法。\n"};
}

std::optional<double> readDelay(const std::string& word) {
    double seconds = 0;
    const char* end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, seconds, std::chars_format::fixed);
    const bool valid = result.ec == std::errc() && result.ptr == end && seconds >= 0 && seconds <= longestDelay;
    return valid ? std::optional(seconds) : std::nullopt;
}

} // namespace

CaptureArguments readCaptureArguments(const std::vector<std::string>& arguments) {
    static const std::map<std::string_view, CaptureArea> areas = {{"--region", CaptureArea::Region},
                                                                  {"--window", CaptureArea::Window},
                                                                  {"--active-window", CaptureArea::ActiveWindow},
                                                                  {"--all-displays", CaptureArea::AllDisplays}};
    if (!arguments.empty() && arguments.front() == showThumbnailCommand && arguments.size() == 4) {
        return {.action = CaptureArguments::Action::ShowThumbnail};
    }
    CaptureArguments read;
    std::optional<std::string> areaWord;
    for (auto word = arguments.begin(); word != arguments.end(); ++word) {
        const std::size_t equals = word->starts_with("--") ? word->find('=') : std::string::npos;
        const std::string name = word->substr(0, equals);
        std::optional<std::string> value;
        if (name == "--delay" || name == "--output") {
            if (equals != std::string::npos) {
                value = word->substr(equals + 1);
            } else if (word + 1 != arguments.end()) {
                value = *++word;
            }
            if (!value || value->empty()) {
                return refuse(name + " 后面要有" + (name == "--delay" ? "秒数" : "路径"));
            }
        } else if (equals != std::string::npos) {
            return refuse("不认识的参数“" + *word + "”");
        }
        if (name == "--help" || name == "-h") {
            return {.action = CaptureArguments::Action::Help, .text = help};
        }
        if (name == "--version") {
            return {.action = CaptureArguments::Action::Version, .text = "rookbay-capture " ROOKBAY_VERSION "\n"};
        }
        if (name == serveClipboardCommand && arguments.size() == 1) {
            return {.action = CaptureArguments::Action::ServeClipboard};
        }
        if (const auto area = areas.find(name); area != areas.end()) {
            if (areaWord && *areaWord != name) {
                return refuse(*areaWord + " 和 " + name + " 不能同时使用");
            }
            areaWord = name;
            read.area = area->second;
        } else if (name == "--delay") {
            const auto seconds = readDelay(*value);
            if (!seconds) {
                return refuse("--delay 后面要有 0 至 3600 的秒数，不是“" + *value + "”");
            }
            read.delay = *seconds;
        } else if (name == "--output") {
            read.output = std::move(value);
        } else if (name == "--clipboard") {
            read.clipboard = true;
        } else {
            return refuse("不认识的参数“" + *word + "”");
        }
    }
    return read;
}

} // namespace rb
