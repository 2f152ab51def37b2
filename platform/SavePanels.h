#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace rb {

// What a save panel starts with.
struct SavePanelSpec {
    std::string title = {};
    std::string prompt = {};    // the title of the button that confirms
    std::string directory = {}; // absolute; a folder that isn't there shows one above it
    std::string name = {};      // proposed, with its extension
    // Without a dot. The panel always shows it and gives no path with another one.
    std::string extension = {};
    friend bool operator==(const SavePanelSpec&, const SavePanelSpec&) = default;
};

// A save panel on the screen. Destruction takes it away without an answer; it may be destroyed inside its answer.
class SavePanel {
public:
    virtual ~SavePanel() = default;
    virtual void makeKeyAndOrderFront() = 0;
};

// The question where to put a new file, beside the program's other windows. The user may make folders in it. Main
// thread only.
class SavePanels {
public:
    // Why this path is refused, for the user to read; nothing when it is fine. A refusal leaves the panel open.
    using Validate = std::function<std::optional<std::string>(const std::string& path)>;
    // The confirmed path, absolute, or nothing when the user cancelled. Told once, in a later turn.
    using Answer = std::function<void(const std::optional<std::string>& path)>;

    virtual ~SavePanels() = default;
    // Shows one in front with the keyboard. The panel itself never replaces or makes a file.
    virtual std::unique_ptr<SavePanel> begin(const SavePanelSpec& spec, Validate validate, Answer answer) = 0;
};

} // namespace rb
