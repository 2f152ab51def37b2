#include "helpers/macos/ResolutionHelper/Trial.h"
#include "helpers/shared/Usage.h"

#import <Foundation/Foundation.h>

#include <signal.h>
#include <unistd.h>

namespace {

constexpr const char* help = R"(用法：ResolutionHelper trial 显示器标识 模式编号

试用一个显示模式，直到标准输入中出现一行 keep；否则在输入结束或 20 秒后恢复原模式。

  --help   显示本说明
)";

} // namespace

int main(int count, char** words) {
    signal(SIGPIPE, SIG_IGN);
    const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
    if (const auto code = rb::answerUsage("ResolutionHelper", arguments, help)) {
        return *code;
    }
    if (arguments.size() != 3 || arguments[0] != "trial") {
        return rb::refuseUsage("ResolutionHelper");
    }
    @autoreleasepool {
        return rb::runTrial(arguments[1], arguments[2], STDIN_FILENO);
    }
}
