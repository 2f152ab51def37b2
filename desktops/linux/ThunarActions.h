#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace rb {

// Thunar keeps all custom actions of the user in one file (uca.xml). These functions change our own action in its
// text and leave every other byte alone. Our action is the one whose unique-id begins with "rookbay-new-text-"; the
// rest of the id is its version.

struct ThunarAction {
    std::string version;
    std::size_t start = 0; // bytes of the text: from "<action>" to behind "</action>"
    std::size_t end = 0;
};

// Nothing when the text has none of ours or is no file of actions.
std::optional<ThunarAction> findThunarAction(std::string_view text);
// Whether the text is a whole file of actions.
bool isThunarActionFile(std::string_view text);
// With the action added at the end; nothing for a text that is no file of actions.
std::optional<std::string> withThunarAction(std::string_view text, const std::string& version,
                                            const std::string& command);
// Without it; the text as it is when there is none.
std::string withoutThunarAction(std::string_view text);

} // namespace rb
