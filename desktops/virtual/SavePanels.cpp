#include "desktops/virtual/SavePanels.h"

#include "desktops/virtual/Contract.h"
#include "desktops/virtual/RunLoop.h"
#include "platform/Files.h"

#include <utility>

namespace rb {

VirtualSavePanel::VirtualSavePanel(VirtualSavePanels& owner, const SavePanelSpec& spec, SavePanels::Validate validate,
                                   SavePanels::Answer answer)
    : owner_(owner)
    , spec_(spec)
    , validate_(std::move(validate))
    , answer_(std::move(answer))
    , folder_(spec.directory)
    , name_(spec.name) {
    owner_.open_.push_back(this);
}

VirtualSavePanel::~VirtualSavePanel() {
    std::erase(owner_.open_, this);
}

bool VirtualSavePanel::confirm() {
    const std::string ending = "." + spec_.extension;
    if (!spec_.extension.empty() && !name_.ends_with(ending)) {
        name_ += ending;
    }
    const std::string path = appendingPathComponent(folder_, name_);
    refusal_ = validate_ ? validate_(path).value_or("") : "";
    if (!refusal_.empty()) {
        return false;
    }
    close(path);
    return true;
}

void VirtualSavePanel::cancel() {
    close(std::nullopt);
}

void VirtualSavePanel::close(const std::optional<std::string>& path) {
    std::erase(owner_.open_, this);
    // The answer usually destroys the panel, which this call still stands in.
    if (const auto answer = std::exchange(answer_, nullptr)) {
        answer(path);
    }
}

std::unique_ptr<SavePanel> VirtualSavePanels::begin(const SavePanelSpec& spec, Validate validate, Answer answer) {
    loop_.requireMainThread("SavePanels::begin");
    return std::make_unique<VirtualSavePanel>(*this, spec, std::move(validate), std::move(answer));
}

VirtualSavePanel& VirtualSavePanels::current() const {
    if (open_.empty()) {
        throw ImpossibleAct("no save panel is open");
    }
    return *open_.back();
}

} // namespace rb
