// Shows the product's notices, one after another, on the desktop it is started on, and ends by itself.

#include "app/Toasts.h"
#include "desktops/linux/Desktop.h"
#include "desktops/linux/Log.h"
#include "desktops/linux/SingleInstance.h"
#include "platform/Application.h"
#include "platform/RunLoop.h"

#include <utility>

namespace {

class Gallery final : public rb::ApplicationDelegate {
public:
    explicit Gallery(const rb::Desktop& desktop)
        : desktop_(desktop)
        , toasts_(desktop)
        , steps_(desktop.runLoop) {}

    void applicationDidFinishLaunching() override {
        toasts_.RBShowToast("剪贴板记录已暂停", "pause.circle.fill", rb::SystemColor::Blue);
        steps_.after(2.2, [this] {
            toasts_.RBShowToast("无法读取截图文件夹，新截图不会自动挂上", "exclamationmark.triangle.fill",
                                rb::SystemColor::Orange);
        });
        steps_.after(4.4,
                     [this] { toasts_.RBShowToast("已存到桌面", "checkmark.circle.fill", rb::SystemColor::Green); });
        steps_.after(6.6, [this] { desktop_.application.terminate(); });
    }
    bool applicationShouldHandleReopen(bool /*hasVisibleWindows*/) override { return true; }
    void applicationOpenFiles(const std::vector<std::string>& /*paths*/) override {}
    void applicationNewTextFile(const std::optional<std::string>& /*folder*/) override {}
    void applicationWillTerminate() override {}
    bool acceptsPreviewPanelControl() override { return false; }
    void beginPreviewPanelControl(rb::PreviewPanel& /*panel*/) override {}
    void endPreviewPanelControl(rb::PreviewPanel& /*panel*/) override {}

private:
    const rb::Desktop& desktop_;
    rb::Toasts toasts_;
    rb::DelayedCalls steps_;
};

} // namespace

int main() {
    rb::LinuxLog log;
    rb::SingleInstance instance(log); // never claimed: it runs beside the program
    auto connection = rb::XConnection::open();
    if (!connection) {
        log.write("the gallery needs an X server");
        return 1;
    }
    const rb::LinuxDesktop linuxDesktop({}, std::move(connection), instance, log);
    Gallery gallery(linuxDesktop.services());
    return linuxDesktop.services().application.run(gallery);
}
