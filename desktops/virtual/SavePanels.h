#pragma once

#include "platform/SavePanels.h"

#include <string>
#include <vector>

namespace rb {

class VirtualRunLoop;
class VirtualSavePanels;

// A save panel as the user sees it: the name can be changed, and both buttons pressed.
class VirtualSavePanel final : public SavePanel {
public:
    VirtualSavePanel(VirtualSavePanels& owner, const SavePanelSpec& spec, SavePanels::Validate validate,
                     SavePanels::Answer answer);
    ~VirtualSavePanel() override;
    VirtualSavePanel(const VirtualSavePanel&) = delete;
    VirtualSavePanel& operator=(const VirtualSavePanel&) = delete;

    void makeKeyAndOrderFront() override { ++broughtForward_; }

    const SavePanelSpec& spec() const { return spec_; }
    int broughtForward() const { return broughtForward_; }
    // What the panel says about the last refused name; empty when it says nothing.
    const std::string& refusal() const { return refusal_; }

    // The user's acts. A name without the panel's extension gets it.
    void goTo(const std::string& folder) { folder_ = folder; }
    void typeName(const std::string& name) { name_ = name; }
    // False when the name is refused; then the panel stays. Else it is gone before the answer is told.
    bool confirm();
    void cancel();

private:
    void close(const std::optional<std::string>& path);

    VirtualSavePanels& owner_;
    SavePanelSpec spec_;
    SavePanels::Validate validate_;
    SavePanels::Answer answer_;
    std::string folder_;
    std::string name_;
    std::string refusal_;
    int broughtForward_ = 0;
};

class VirtualSavePanels final : public SavePanels {
public:
    explicit VirtualSavePanels(VirtualRunLoop& loop)
        : loop_(loop) {}

    std::unique_ptr<SavePanel> begin(const SavePanelSpec& spec, Validate validate, Answer answer) override;

    // Those on the screen.
    const std::vector<VirtualSavePanel*>& open() const { return open_; }
    // The one that is open; throws ImpossibleAct when there is none.
    VirtualSavePanel& current() const;

private:
    friend class VirtualSavePanel;
    VirtualRunLoop& loop_;
    std::vector<VirtualSavePanel*> open_;
};

} // namespace rb
