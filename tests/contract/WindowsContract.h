#pragma once

#include "platform/Application.h"
#include "tests/contract/DesktopUnderTest.h"

#include <string>

namespace rb {

class WindowsContract : public ContractTest {
protected:
    static constexpr Size contentSize{300, 200};

    View box(const std::string& name) {
        BoxView area;
        area.layer = layer_;
        area.acceptsFirstResponder = true;
        area.becameFirstResponder = [this, name] { events_ += "+" + name + " "; };
        area.resignedFirstResponder = [this, name] { events_ += "-" + name + " "; };
        area.keyDown = [this, name](const KeyEvent& event) {
            events_ += name + ":" + std::to_string(event.keyCode) + " ";
        };
        area.mouseDown = [] { return true; };
        area.updateLayer = [this] { ++layerUpdates_; };
        return {.content = std::move(area), .identifier = name, .height = 50};
    }
    View page(std::vector<View> children) {
        StackView stack{.alignment = StackAlignment::Fill, .spacing = 10, .insets = {10, 10, 10, 10}};
        stack.children = std::move(children);
        stack.children.push_back(
            {.content = ButtonView{.title = "保存", .action = [this] { events_ += "save "; }, .keyEquivalent = "\r"}});
        stack.children.push_back({.content = ButtonView{.title = "Off", .action = [] {}, .enabled = false}});
        return {.content = std::move(stack)};
    }
    std::unique_ptr<Window> showWindow(View content) {
        auto window = desktop().windows.createWindow(
            {.contentSize = contentSize, .title = "Contract", .willClose = [this] { events_ += "closed "; }});
        window->setContent(std::move(content));
        desktop().application.activateIgnoringOtherApps();
        window->center();
        window->makeKeyAndOrderFront();
        EXPECT_TRUE(user().until([&] { return window->isVisible(); }));
        return window;
    }

    std::shared_ptr<Layer> layer_ = Layer::create();
    std::string events_;
    int layerUpdates_ = 0;
};

TEST_P(WindowsContract, TheFirstResponderTakesTheKeys) {
    const auto window = showWindow(page({box("a"), {.content = LabelView{.text = "label"}, .identifier = "label"}}));
    EXPECT_FALSE(window->makeFirstResponder("nobody"));
    EXPECT_FALSE(window->makeFirstResponder("label"));
    EXPECT_TRUE(window->makeFirstResponder("a"));
    EXPECT_TRUE(window->makeFirstResponder("a")) << "again changes nothing";
    EXPECT_EQ(events_, "+a ");
    user().pressKey({.keyCode = 105});
    user().pressKey({.keyCode = 36, .charactersIgnoringModifiers = "\r"});
    EXPECT_TRUE(user().until([&] { return events_ == "+a a:105 a:36 "; })) << events_;
}

TEST_P(WindowsContract, ANewRenderingKeepsTheFirstResponderInItsPlace) {
    const auto window = showWindow(page({box("a")}));
    window->makeFirstResponder("a");
    window->setContent(page({box("a")}));
    EXPECT_EQ(events_, "+a ");
    user().pressKey({.keyCode = 37, .charactersIgnoringModifiers = "l"});
    EXPECT_TRUE(user().until([&] { return events_ == "+a a:37 "; })) << events_;
    window->setContent(page({}));
    EXPECT_EQ(events_, "+a a:37 -a ") << "its view is gone";
}

TEST_P(WindowsContract, ClicksMoveTheFocusAndPressButtons) {
    const auto window = showWindow(page({box("a"), box("b")}));
    window->makeFirstResponder("a");
    user().clickBox(*window, "b");
    EXPECT_TRUE(user().until([&] { return events_ == "+a -a +b "; })) << events_;
    EXPECT_TRUE(user().clickButton(*window, "保存"));
    EXPECT_TRUE(user().until([&] { return events_ == "+a -a +b save "; })) << events_;
    EXPECT_FALSE(user().clickButton(*window, "Off"));
    EXPECT_FALSE(user().clickButton(*window, "nowhere"));
}

TEST_P(WindowsContract, ReturnPressesTheDefaultButton) {
    const auto window = showWindow(page({}));
    user().pressKey({.keyCode = 36, .charactersIgnoringModifiers = "\r"});
    EXPECT_TRUE(user().until([&] { return events_ == "save "; })) << events_;
}

TEST_P(WindowsContract, ClosingTakesItOffTheScreenAndItComesBack) {
    const auto window = showWindow(page({box("a")}));
    window->makeFirstResponder("a");
    user().closeWindow(*window);
    EXPECT_TRUE(user().until([&] { return !window->isVisible(); }));
    EXPECT_EQ(events_, "+a -a closed ");
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(user().until([&] { return window->isVisible(); }));
    EXPECT_TRUE(window->makeFirstResponder("a"));
    window->orderOut();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(events_, "+a -a closed +a -a ") << "ordering out tells nobody of a close";
}

TEST_P(WindowsContract, ABoxKeepsItsLayerAsLargeAsItself) {
    const auto window = showWindow(page({box("a")}));
    EXPECT_TRUE(user().until([&] { return layer_->model().bounds == Rect{0, 0, 280, 50}; }));
    EXPECT_EQ(layerUpdates_, 1) << "once when it is first shown";
    EXPECT_GE(window->frame().height, contentSize.height);
    EXPECT_GE(window->frame().width, contentSize.width);
}

} // namespace rb
