#pragma once

namespace rb {

// The system's file preview, shared by all programs, which asks the frontmost one who controls it. Its commands
// come with the first feature that previews files.
class PreviewPanel {
public:
    virtual ~PreviewPanel() = default;
};

} // namespace rb
