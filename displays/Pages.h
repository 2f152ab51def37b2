#pragma once

#include "displays/ConnectionSnapshot.h"
#include "displays/PageParts.h"

#include <functional>
#include <string>
#include <vector>

// The content of the window as a function of what is known. Only the cards' hover state lives elsewhere.
namespace rb {

inline constexpr int displaysPage = 0;
inline constexpr int connectionsPage = 1;

struct PageState {
    const std::vector<DisplayRow>& rows;
    const ConnectionSnapshot& connections;
    bool busy = false;
    int selectedPage = displaysPage;
    bool technicalDetails = false;
    Color blue = {}; // the system's
};

// What the buttons do. Rows and modes by their index.
struct PageActions {
    std::function<void()> refresh;
    std::function<void(std::size_t row)> identify;
    std::function<void(std::size_t row)> sleep;
    std::function<void(std::size_t row)> wake;
    std::function<void(std::size_t row)> applyResolution;
    std::function<void(std::size_t row, std::size_t mode)> selectMode;
    std::function<void(bool on)> toggleDetails;
    std::function<void(int page)> navigate;
    std::function<void()> lockAndSleep;
    std::function<void()> showHotKeySettings;
};

// Identifiers in the content: of the scroll view and of the stack in it.
inline constexpr const char* pageScrollIdentifier = "page";
inline constexpr const char* pageStackIdentifier = "page.stack";
// "row.0.mode": the picker of a row.
std::string pickerIdentifier(std::size_t row);

// The selected page: heading, header row, cards.
StackView pageStack(const PageState& state, const PageActions& actions, CardPool& cards);

// The layers behind the two page buttons.
using PageButtonLayers = std::vector<std::shared_ptr<Layer>>;

// Sidebar and page.
View windowContent(const PageState& state, const PageActions& actions, CardPool& cards,
                   const PageButtonLayers& pageButtons);

} // namespace rb
