#include "helpers/capture/Arguments.h"
#include "helpers/capture/CaptureRun.h"
#include "helpers/capture/Clipboard.h"
#include "helpers/capture/Thumbnail.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

int main(int count, char** words) {
    const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
    const rb::CaptureArguments read = rb::readCaptureArguments(arguments);
    switch (read.action) {
    case rb::CaptureArguments::Action::Refuse:
        std::fputs(read.text.c_str(), stderr);
        return rb::CaptureExit::Misuse;
    case rb::CaptureArguments::Action::Help:
    case rb::CaptureArguments::Action::Version:
        return std::fputs(read.text.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? rb::CaptureExit::Failed
                                                                                     : rb::CaptureExit::Taken;
    case rb::CaptureArguments::Action::ServeClipboard:
        return rb::serveClipboard();
    case rb::CaptureArguments::Action::ShowThumbnail:
        return rb::runThumbnail(arguments[3], {std::atoi(arguments[1].c_str()), std::atoi(arguments[2].c_str())});
    case rb::CaptureArguments::Action::Capture:
        break;
    }
    return rb::runCapture(read);
}
