#include "helpers/macos/DisplayHelper/DisplayCommands.h"
#include "helpers/shared/Answer.h"
#include "helpers/shared/Usage.h"

#import <Foundation/Foundation.h>

namespace {

constexpr const char* help = R"(用法：DisplayHelper list
      DisplayHelper probe|sleep|wake 通道

通过 DDC/CI 让单块外接显示器待机或唤醒。结果是标准输出上的一行 JSON。需要 Apple 芯片。

  list     列出能对应到控制通道的显示器
  probe    显示器是否响应
  sleep    待机
  wake     唤醒
  --help   显示本说明
)";

} // namespace

int main(int count, char** words) {
    const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
    if (const auto code = rb::answerUsage("DisplayHelper", arguments, help)) {
        return *code;
    }
    @autoreleasepool {
        const std::string answer = rb::answerDisplayCommand(arguments);
        return answer.empty() ? rb::refuseUsage("DisplayHelper") : rb::sayLine(answer) ? 0 : 1;
    }
}
