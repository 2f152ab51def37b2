#include "helpers/linux/resolution/Trial.h"
#include "helpers/shared/Answer.h"
#include "helpers/shared/Usage.h"

#include <string>
#include <vector>

namespace {

constexpr const char* help = R"(用法：ResolutionHelper trial 显示器标识 模式编号
      ResolutionHelper restore

试用一个显示模式。设置成功后在标准输出写一行 JSON，然后等待标准输入中的一行 keep。
没有收到 keep 就恢复原模式：输入结束、收到信号、父进程退出或 20 秒之后。

  trial     显示器标识为“输出:厂商:型号:序列号”，模式编号为 RandR 模式的十进制编号
            （见 xrandr --verbose）
  restore   按遗留的记录恢复原模式
  --help    显示本说明
)";

} // namespace

int main(int count, char** words) {
    rb::guardStandardDescriptors();
    const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
    if (const auto code = rb::answerUsage("ResolutionHelper", arguments, help)) {
        return *code;
    }
    if (arguments.size() == 3 && arguments[0] == "trial") {
        return rb::runTrial(arguments[1], arguments[2]);
    }
    if (arguments.size() == 1 && arguments[0] == "restore") {
        return rb::restoreFromRecords();
    }
    return rb::refuseUsage("ResolutionHelper");
}
