#include "helpers/linux/display/Channels.h"
#include "helpers/linux/display/I2cDevice.h"
#include "helpers/shared/Answer.h"
#include "helpers/shared/Usage.h"

#include <string>
#include <vector>

namespace {

constexpr const char* help = R"(用法：DisplayHelper list
      DisplayHelper probe|sleep|wake 通道

通过 DDC/CI 让单块外接显示器待机或唤醒。结果是标准输出上的一行 JSON。

  list     列出能对应到控制通道的显示器
  probe    显示器是否响应
  sleep    待机
  wake     唤醒
  --help   显示本说明

需要内核模块 i2c-dev 和对 /dev/i2c-* 的读写权限（组 i2c）。
)";

int list() {
    std::string json;
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection) == 0) {
        const auto state = rb::readRandr(connection, xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root);
        for (const rb::ListEntry& entry :
             state ? rb::matchOutputs(*state, rb::readChannels("/")) : std::vector<rb::ListEntry>{}) {
            json += (json.empty() ? "" : ",");
            json += R"({"id":)" + std::to_string(entry.output) + R"(,"uuid":)" + rb::quoted(entry.uuid) + "}";
        }
    }
    xcb_disconnect(connection);
    return rb::sayLine("[" + json + "]") ? 0 : 1;
}

} // namespace

int main(int count, char** words) {
    rb::guardStandardDescriptors();
    const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
    if (const auto code = rb::answerUsage("DisplayHelper", arguments, help)) {
        return *code;
    }
    if (arguments.size() == 1 && arguments[0] == "list") {
        return list();
    }
    if (arguments.size() != 2 || (arguments[0] != "probe" && arguments[0] != "sleep" && arguments[0] != "wake")) {
        return rb::refuseUsage("DisplayHelper");
    }
    const auto channel = rb::channelNamed(arguments[1], rb::readChannels("/"));
    if (!channel) {
        return rb::sayLine(rb::Outcome(false).message("找不到这个控制通道；显示器可能已更换。").text()) ? 0 : 1;
    }
    rb::I2cDevice line(channel->bus);
    rb::DdcPower display(line);
    const std::string answer = arguments[0] == "probe"   ? rb::probe(display)
                               : arguments[0] == "sleep" ? rb::sleepDisplay(display)
                                                         : rb::wakeDisplay(display);
    return rb::sayLine(answer) ? 0 : 1;
}
