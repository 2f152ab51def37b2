#include "helpers/linux/cable/Snapshot.h"
#include "helpers/shared/Answer.h"
#include "helpers/shared/Usage.h"

#include <string>
#include <vector>

namespace {

constexpr const char* help = R"(用法：CableHelper [--root 文件夹]

把 USB-C / Thunderbolt 端口、线缆、供电和所连设备的快照作为一行 JSON 写到标准输出。
内核没有报告的内容不会出现。

  --root 文件夹   从这个文件夹而不是 / 读取 sys 和 usr（用于检查记录下来的系统）
  --help          显示本说明
)";

} // namespace

int main(int count, char** words) {
    rb::guardStandardDescriptors();
    const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
    if (const auto code = rb::answerUsage("CableHelper", arguments, help)) {
        return *code;
    }
    std::string root = "/";
    if (arguments.size() == 2 && arguments[0] == "--root") {
        root = arguments[1];
    } else if (!arguments.empty()) {
        return rb::refuseUsage("CableHelper");
    }
    return rb::sayLine(rb::connectionSnapshot(rb::Sysfs(root))) ? 0 : 1;
}
