#include "desktops/linux/SavePanels.h"

#include "desktops/linux/SaveDialog.h"
#include "desktops/linux/Windows.h"

#include <utility>

namespace rb {

namespace {

class LinuxSavePanel final : public SavePanel {
public:
    LinuxSavePanel(LinuxWindows& windows, const SavePanelSpec& spec, SavePanels::Validate validate,
                   SavePanels::Answer answer)
        : windows_(windows)
        , dialog_(new SaveDialog(spec, std::move(validate), std::move(answer))) {
        dialog_->present();
        windows_.activate(*dialog_);
    }
    // The dialog may be in the middle of its own event.
    ~LinuxSavePanel() override { dialog_->dismiss(); }
    LinuxSavePanel(const LinuxSavePanel&) = delete;
    LinuxSavePanel& operator=(const LinuxSavePanel&) = delete;

    void makeKeyAndOrderFront() override {
        dialog_->showNormal();
        dialog_->raise();
        windows_.activate(*dialog_);
    }

private:
    LinuxWindows& windows_;
    SaveDialog* dialog_; // deletes itself when it is dismissed
};

} // namespace

std::unique_ptr<SavePanel> LinuxSavePanels::begin(const SavePanelSpec& spec, Validate validate, Answer answer) {
    SaveDialog::useTranslations();
    return std::make_unique<LinuxSavePanel>(windows_, spec, std::move(validate), std::move(answer));
}

} // namespace rb
