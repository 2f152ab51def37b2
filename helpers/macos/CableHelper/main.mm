#include "helpers/macos/CableHelper/PortSnapshot.h"
#include "helpers/macos/CableHelper/RegistryReader.h"
#include "helpers/shared/Answer.h"
#include "helpers/shared/Usage.h"

#import <Foundation/Foundation.h>

namespace {

constexpr const char* help = R"(用法：CableHelper

把 USB-C / Thunderbolt 端口、线缆、供电和所连设备的快照作为一行 JSON 写到标准输出。
系统没有报告的内容不会出现。

  --help   显示本说明
)";

} // namespace

int main(int count, char** words) {
    const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
    if (const auto code = rb::answerUsage("CableHelper", arguments, help)) {
        return *code;
    }
    if (!arguments.empty()) {
        return rb::refuseUsage("CableHelper");
    }
    @autoreleasepool {
        return rb::sayLine(rb::connectionSnapshot(rb::readConnectionFacts())) ? 0 : 1;
    }
}
