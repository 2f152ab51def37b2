#include "helpers/shared/Usage.h"

#include <cstdio>

namespace rb {

std::optional<int> answerUsage(const std::string& program, const std::vector<std::string>& arguments,
                               const std::string& help) {
    if (arguments.size() != 1) {
        return std::nullopt;
    }
    std::string text;
    if (arguments[0] == "--help" || arguments[0] == "-h") {
        text = help;
    } else if (arguments[0] == "--version") {
        text = program + " " ROOKBAY_VERSION "\n";
    } else {
        return std::nullopt;
    }
    return std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
}

int refuseUsage(const std::string& program) {
    constexpr int misuse = 2;
    std::fprintf(stderr, "%s：参数无效。用 %s --help 查看用法。\n", program.c_str(), program.c_str());
    return misuse;
}

} // namespace rb
