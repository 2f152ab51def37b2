#include "displays/Pages.h"

#include "displays/ConnectionCards.h"

#include <algorithm>
#include <utility>

namespace rb {

namespace {

constexpr double sidebarWidth = 210;
constexpr double sidebarMargin = 18;
constexpr double pageInset = 24;
constexpr double pageButtonHeight = 36;
constexpr double applyButtonWidth = 86;

View row(std::vector<View> children) {
    StackView stack{.orientation = Orientation::Horizontal, .alignment = StackAlignment::Center, .spacing = 10};
    stack.children = std::move(children);
    return {.content = std::move(stack)};
}

std::string known(const std::optional<std::string>& value) {
    return value && !value->empty() ? *value : "未知";
}

std::string connectionText(const Port* port) {
    if (!port) {
        return "未读取到端口映射";
    }
    const auto& active = port->activeTransports;
    if (std::find(active.begin(), active.end(), "DisplayPort") != active.end()) {
        return "USB-C / DP 视频";
    }
    std::string joined;
    for (const std::string& token : active) {
        joined += (joined.empty() ? "" : " + ") + token;
    }
    return joined;
}

View modePicker(const DisplayRow& display, std::size_t index, const PageState& state, const PageActions& actions) {
    PopUpView popUp{.enabled = !state.busy && display.online};
    bool anyHidpi = false;
    for (std::size_t mode = 0; mode < display.modes.size(); ++mode) {
        popUp.items.push_back(display.modes[mode].label);
        anyHidpi = anyHidpi || display.modes[mode].hidpi;
        if (display.modes[mode].modeID == display.currentMode->modeID) {
            popUp.selected = mode;
        }
    }
    popUp.selectionChanged = [select = actions.selectMode, index](std::size_t mode) { select(index, mode); };
    const bool canApply = popUp.enabled && !popUp.items.empty();
    View picker{.content = std::move(popUp), .identifier = pickerIdentifier(index), .expands = true};
    if (!anyHidpi) {
        picker.toolTip = "此连接仅提供系统已有的普通分辨率。";
    }
    View apply{.content = ButtonView{.title = "试用模式",
                                     .action = [act = actions.applyResolution, index] { act(index); },
                                     .enabled = canApply},
               .width = applyButtonWidth};
    return fullWidth(row({std::move(picker), std::move(apply)}));
}

View displayCard(std::size_t index, const PageState& state, const PageActions& actions) {
    const DisplayRow& display = state.rows[index];
    const Port* port = portForDisplay(display, state.rows, state.connections);
    StackView card = vertical();
    card.children.push_back(cardTitle(display.name, "display", state.blue));
    card.children.push_back(text("显示器 " + std::to_string(index + 1) + (display.main ? " · 主屏幕" : "") + " · " +
                                     (display.online ? "已连接" : "暂不可达"),
                                 TextColor::SecondaryLabel));
    card.children.push_back(metrics({{"渲染像素", known(display.resolution)},
                                     {"刷新率", known(display.refresh)},
                                     {"连接", known(connectionText(port))}}));
    if (display.currentMode) {
        card.children.push_back(modePicker(display, index, state, actions));
    }
    card.children.push_back(text(display.status.value_or("等待检测"),
                                 display.supported ? TextColor::SystemGreen : TextColor::SecondaryLabel));
    if (port) {
        card.children.push_back(text("端口：" + known(port->name)));
    }
    const auto button = [index](std::string title, const std::function<void(std::size_t)>& action, bool enabled) {
        return View{.content = ButtonView{
                        .title = std::move(title), .action = [action, index] { action(index); }, .enabled = enabled}};
    };
    card.children.push_back(
        row({button("识别", actions.identify, !state.busy && display.online),
             button("熄屏待机", actions.sleep, !state.busy && display.supported && display.online),
             button("唤醒", actions.wake, !state.busy && (display.supported || display.sleepRequested))}));
    return {.content = std::move(card)};
}

View pageButton(const std::string& title, const std::string& symbol, int page, const PageState& state,
                const PageActions& actions, const std::shared_ptr<Layer>& layer) {
    const bool selected = state.selectedPage == page;
    BoxView box;
    box.layer = layer;
    box.child.push_back(
        {.content = ButtonView{.title = title,
                               .action = [navigate = actions.navigate, page] { navigate(page); },
                               .image = Symbol{.name = symbol},
                               .bordered = false,
                               .contentColor = selected ? TextColor::SystemBlue : TextColor::SecondaryLabel}});
    return fullWidth({.content = std::move(box), .height = pageButtonHeight});
}

View sidebar(const PageState& state, const PageActions& actions, const PageButtonLayers& layers) {
    StackView stack{.orientation = Orientation::Vertical,
                    .alignment = StackAlignment::Fill,
                    .spacing = 12,
                    .insets = {28, sidebarMargin, 22, sidebarMargin}};
    stack.children.push_back(cardTitle("Rook Bay", "lock.display", state.blue));
    stack.children.push_back(pageButton("显示器", "display", displaysPage, state, actions, layers.at(0)));
    stack.children.push_back(
        pageButton("线缆与供电", "cable.connector", connectionsPage, state, actions, layers.at(1)));
    stack.children.push_back(text("快捷操作", TextColor::SecondaryLabel));
    stack.children.push_back({.content = ButtonView{.title = "全部熄屏",
                                                    .action = actions.lockAndSleep,
                                                    .image = Symbol{.name = "moon.zzz"},
                                                    .prominent = true}});
    stack.children.push_back({.content = ButtonView{.title = "设置快捷键…",
                                                    .action = actions.showHotKeySettings,
                                                    .image = Symbol{.name = "keyboard"}}});
    stack.children.push_back({.content = SpacerView{}});
    BoxView box;
    box.material = Material::Sidebar;
    box.child.push_back({.content = std::move(stack)});
    return {.content = std::move(box), .width = sidebarWidth};
}

} // namespace

std::string pickerIdentifier(std::size_t row) {
    return "row." + std::to_string(row) + ".mode";
}

StackView pageStack(const PageState& state, const PageActions& actions, CardPool& cards) {
    cards.restart();
    StackView stack{.orientation = Orientation::Vertical,
                    .alignment = StackAlignment::Leading,
                    .spacing = 16,
                    .insets = {pageInset, pageInset, pageInset, pageInset}};
    const bool connections = state.selectedPage == connectionsPage;
    stack.children.push_back(heading(connections ? "线缆与供电" : "显示器", 30));
    stack.children.push_back(row(
        {{.content =
              ButtonView{.title = state.busy ? "检测中…" : "刷新", .action = actions.refresh, .enabled = !state.busy}},
         text(std::to_string(state.rows.size()) + " 块显示器", TextColor::SecondaryLabel)}));
    if (connections) {
        addConnectionCards(stack, state, actions, cards);
        return stack;
    }
    for (std::size_t index = 0; index < state.rows.size(); ++index) {
        stack.children.push_back(cards.card(displayCard(index, state, actions)));
    }
    if (state.rows.empty()) {
        stack.children.push_back(cards.card(emptyCard("还没有检测到显示器", "连接屏幕后，点击刷新。")));
    }
    return stack;
}

View windowContent(const PageState& state, const PageActions& actions, CardPool& cards,
                   const PageButtonLayers& pageButtons) {
    ScrollView scroll;
    scroll.child.push_back({.content = pageStack(state, actions, cards), .identifier = pageStackIdentifier});
    StackView window{.orientation = Orientation::Horizontal, .alignment = StackAlignment::Fill};
    window.children.push_back(sidebar(state, actions, pageButtons));
    window.children.push_back({.content = std::move(scroll), .identifier = pageScrollIdentifier, .expands = true});
    return {.content = std::move(window)};
}

} // namespace rb
