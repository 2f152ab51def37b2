#pragma once

#include "clipboard/ClipItem.h"
#include "tests/session/SessionTest.h"

#include <cstdint>
#include <string>
#include <vector>

namespace rb {

// A session in which things are copied and pasted; what the program has recorded is read from its archive.
class ClipboardSessionTest : public SessionTest {
protected:
    std::string archive() { return session().environment.at("XDG_DATA_HOME") + "/rook-bay/Clipboard.archive"; }
    std::vector<RBClipItem> items();
    // Of the entries, newest first; "kind N" for those without a text.
    std::vector<std::string> texts();
    [[nodiscard]] bool waitForNewest(const std::string& text, double limit = 10);
    // Writes a file into the session's folder and says where it is.
    std::string file(const std::string& name, const std::string& contents);
    // As xclip copies; it goes into the background by itself.
    void xclip(const std::string& contents, const std::string& target = "UTF8_STRING",
               const std::string& selection = "clipboard");
    std::string paste(const std::string& target = "UTF8_STRING");
    // Opens the history and chooses by its key, with modifiers held.
    void chooseEntry(std::uint32_t key, const std::vector<std::uint32_t>& modifiers = {});
    // A PNG of more than a million bytes.
    static std::string largePicture();
};

} // namespace rb
