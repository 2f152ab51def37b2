#pragma once

#include "platform/Application.h"

@class RBMacApplicationDelegate;

namespace rb {

class PreviewPanel;

// NSApplication with a delegate object that forwards to the product's. Created before any other part of AppKit is used.
class MacApplication final : public Application {
public:
    MacApplication();

    int run(ApplicationDelegate& delegate) override;
    void terminate() override;
    void setActivationPolicy(ActivationPolicy policy) override;
    void activateIgnoringOtherApps() override;
    std::vector<std::string> arguments() const override;
    // Handed to the delegate when the system's panel asks who controls it; outlives the running.
    void setPreviewPanel(PreviewPanel& panel);
    std::optional<std::string> infoString(const std::string& key) const override;

private:
    RBMacApplicationDelegate* delegate_; // AppKit refers to it weakly
};

} // namespace rb
