#pragma once

#include "platform/Workspace.h"

namespace rb {

class MacWorkspace final : public Workspace {
public:
    void openFile(const std::string& path, Done done) override;
    // With TextEdit.
    void openInTextEditor(const std::string& path, Done done) override;
    void openURL(const std::string& url) override;
    void revealFiles(const std::vector<std::string>& paths) override;
};

} // namespace rb
