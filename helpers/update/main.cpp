#include "desktops/linux/Folders.h"
#include "desktops/linux/Style.h"
#include "helpers/update/Address.h"
#include "helpers/update/UpdateCheck.h"
#include "helpers/update/UpdateWindow.h"
#include "helpers/update/Versions.h"

#include <QApplication>
#include <QSocketNotifier>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <sys/utsname.h>
#include <unistd.h>

namespace {

constexpr int success = 0;
constexpr int failure = 1;
constexpr int misuse = 2;

constexpr const char* help = R"(用法：rookbay-update check --feed 地址 --key 公钥 --version 版本 [--appearance light|dark]
      rookbay-update probe [--timeout 秒] 地址

Rook Bay 用它检查更新，通常不需要自己运行。

check  检查、下载、验证更新，并交给系统的安装程序；出错时最后打印 "failed 代码 原因"。
probe  读取一个更新源，打印 "HTTP 状态" 和内容。
)";

// Options by name, and what stands without one under "".
std::map<std::string, std::string> readArguments(int count, char** words) {
    std::map<std::string, std::string> found;
    for (int i = 2; i < count; ++i) {
        const std::string_view word(words[i]);
        if (word.starts_with("--") && i + 1 < count) {
            found[std::string(word.substr(2))] = words[++i];
        } else {
            found[""] = word;
        }
    }
    return found;
}

std::string thisSystem() {
    utsname names{};
    return uname(&names) == 0 ? std::string("linux-") + std::data(names.machine) : "linux";
}

int probe(int count, char** words, std::map<std::string, std::string> options) {
    constexpr double longestAnswer = 20; // seconds
    constexpr double longestSilence = 60;
    const auto address = rb::allowedAddress(options[""]);
    if (!address) {
        std::fputs("rookbay-update: only HTTPS and this machine are asked\n", stderr);
        return failure;
    }
    QCoreApplication application(count, words);
    QNetworkAccessManager network;
    const double silence = std::strtod(options["timeout"].c_str(), nullptr);
    std::string body;
    int code = failure;
    const rb::Fetch fetch(
        network, *address,
        {.silence = silence > 0 && silence < longestSilence ? silence : longestSilence, .whole = longestAnswer},
        [&](const QByteArray& bytes, std::uint64_t) {
            body.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
            return true;
        },
        [&](const rb::Fetch::Result& result) {
            if (result.error.empty()) {
                std::printf("HTTP %d\n", result.status);
                std::fwrite(body.data(), 1, body.size(), stdout);
                code = std::fflush(stdout) == 0 ? success : failure;
            } else {
                std::fprintf(stderr, "rookbay-update: %s\n", result.error.c_str());
            }
            QCoreApplication::quit();
        });
    QCoreApplication::exec();
    return code;
}

int check(int count, char** words, std::map<std::string, std::string> options) {
    QApplication application(count, words);
    QCoreApplication::setApplicationName(QStringLiteral("rook-bay"));
    QGuiApplication::setDesktopFileName(QStringLiteral("rookbay"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    const rb::Theme theme = rb::Theme::make(options["appearance"] == "dark", QColor());
    QApplication::setFont(rb::LinuxStyle::interfaceFont(QApplication::font()));
    QApplication::setStyle(new rb::LinuxStyle(theme)); // the application owns it
    QApplication::setPalette(theme.palette());

    rb::UpdateCheck* running = nullptr;
    rb::UpdateWindow window({.install = [&] { running->install(); }, .closed = [] { QCoreApplication::exit(success); }});
    rb::UpdateCheck::Settings settings{.feed = options["feed"],
                                       .key = options["key"],
                                       .version = options["version"],
                                       .system = thisSystem(),
                                       .folder = rb::cacheFolder() + "/updates"};
    bool failed = false;
    rb::UpdateCheck updateCheck(std::move(settings), window, [&](rb::UpdateErrorCode code, const std::string& detail) {
        failed = true;
        std::printf("failed %d %s\n", static_cast<int>(code), detail.c_str());
        std::fflush(stdout);
    });
    running = &updateCheck;

    // Whoever started us says "activate" when the user asks again, and is gone when there is nothing more to read.
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &window, [&] {
        std::array<char, 256> bytes{};
        if (read(STDIN_FILENO, bytes.data(), bytes.size()) > 0) {
            window.present();
        } else {
            input.setEnabled(false);
            window.reject();
        }
    });
    updateCheck.start();
    window.present();
    const int code = QApplication::exec();
    return failed ? failure : code;
}

} // namespace

int main(int count, char** words) {
    const std::string_view command = count > 1 ? words[1] : "";
    if (command == "--help" || command == "-h") {
        std::fputs(help, stdout);
        return success;
    }
    if (command == "--version") {
        std::puts("rookbay-update " ROOKBAY_VERSION);
        return success;
    }
    auto options = readArguments(count, words);
    if (command == "probe" && !options[""].empty()) {
        return probe(count, words, std::move(options));
    }
    if (command == "check" && !options["feed"].empty() && rb::isVersion(options["version"])) {
        return check(count, words, std::move(options));
    }
    std::fputs(help, stderr);
    return misuse;
}
