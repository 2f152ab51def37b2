#include "desktops/macos/BoxView.h"
#include "desktops/macos/Views.h"
#include "desktops/macos/Window.h"

#include "tests/macos/MacTest.h"

namespace rb {

namespace {

class ViewTest : public fake::MacTest {
protected:
    void TearDown() override {
        node_ = nullptr;
        MacTest::TearDown();
    }
    NSView* render(const View& view) {
        ViewNode::render(node_, view);
        return node_->native();
    }
    RBMacBoxView* renderBox(BoxView box) {
        return (RBMacBoxView*)render({.content = std::move(box), .identifier = "box"});
    }
    static View label(const std::string& text) { return {.content = LabelView{.text = text}}; }
    static std::vector<std::string> texts() {
        std::vector<std::string> found;
        for (const auto& call : fake::calls("-[NSTextField setStringValue:]")) {
            found.push_back(call.string(0));
        }
        return found;
    }

    std::unique_ptr<ViewNode> node_;
};

TEST_F(ViewTest, updatesInPlaceWhatIsOfTheSameKind) {
    StackView stack{.children = {label("a"), label("b")}};
    NSView* native = render({.content = stack});
    stack.children[1] = {.content = ButtonView{.title = "press"}};
    stack.children.push_back(label("c"));
    fake::forgetCalls();
    EXPECT_EQ(render({.content = stack}), native);
    EXPECT_EQ(texts(), (std::vector<std::string>{"a", "c"}));
    EXPECT_EQ(fake::calls("-[NSView removeFromSuperview]").size(), 1u);
    const auto inserted = fake::calls("-[NSStackView insertArrangedSubview:atIndex:]");
    ASSERT_EQ(inserted.size(), 2u);
    EXPECT_TRUE([inserted[0].object(0) isKindOfClass:NSButton.class]);
    EXPECT_EQ(inserted[0].integer(1), 1);

    stack.children.resize(1);
    fake::forgetCalls();
    render({.content = stack});
    EXPECT_EQ(fake::calls("-[NSView removeFromSuperview]").size(), 2u);

    // A label that begins to wrap is another widget.
    std::get<LabelView>(stack.children[0].content).wraps = true;
    fake::forgetCalls();
    render({.content = stack});
    EXPECT_EQ(fake::calls("+[NSTextField wrappingLabelWithString:]").size(), 1u);
}

TEST_F(ViewTest, stacksSpaceAlignAndFill) {
    StackView stack{.orientation = Orientation::Vertical,
                    .alignment = StackAlignment::Fill,
                    .spacing = 4,
                    .insets = {.top = 1, .left = 2, .bottom = 3, .right = 4}};
    stack.children = {label("a"), label("b")};
    stack.children[0].spacingAfter = 18;
    NSStackView* native = (NSStackView*)render({.content = stack, .width = 100});
    EXPECT_EQ(native.orientation, NSUserInterfaceLayoutOrientationVertical);
    EXPECT_EQ(native.alignment, NSLayoutAttributeLeading);
    EXPECT_EQ(native.edgeInsets.left, 2);
    EXPECT_EQ(native.edgeInsets.bottom, 3);
    const auto custom = fake::calls("-[NSStackView setCustomSpacing:afterView:]");
    ASSERT_EQ(custom.size(), 2u);
    EXPECT_EQ(custom[0].real(0), 18);
    EXPECT_EQ(custom[1].real(0), 4);
    const auto filled = fake::calls("-[NSLayoutXAxisAnchor constraintEqualToAnchor:constant:]");
    ASSERT_EQ(filled.size(), 2u);
    EXPECT_EQ(filled[0].real(1), -4);
    EXPECT_EQ(fake::lastCall("-[NSLayoutDimension constraintEqualToConstant:]").real(0), 100);
    EXPECT_FALSE(native.translatesAutoresizingMaskIntoConstraints);
}

TEST_F(ViewTest, aButtonMayRenderItsWindowAnew) {
    int pressed = 0;
    std::function<void()> again = [&] {
        ++pressed;
        render(label("gone"));
    };
    NSButton* native = (NSButton*)render({.content = ButtonView{.title = "go", .action = again, .enabled = false}});
    EXPECT_FALSE(native.enabled);
    RBMacButtonTarget* target = native.target;
    fake::press(native);
    EXPECT_EQ(pressed, 1);
    EXPECT_NE(target, nil);
    // The system may still hold the button; its action is gone with the description.
    if (native.target != nil) {
        fake::press(native);
    }
    EXPECT_EQ(pressed, 1);
}

TEST_F(ViewTest, aBoxHandsOnKeysFocusAndMouse) {
    std::string told;
    bool wantsFocus = false;
    BoxView box;
    box.acceptsFirstResponder = true;
    box.becameFirstResponder = [&] { told += "became "; };
    box.resignedFirstResponder = [&] { told += "resigned "; };
    box.keyDown = [&](const KeyEvent& event) {
        told += std::to_string(event.keyCode) + event.charactersIgnoringModifiers;
    };
    box.mouseDown = [&] { return wantsFocus; };
    box.mouseEntered = [&] { told += " entered"; };
    box.mouseExited = [&] { told += " exited"; };
    RBMacBoxView* view = renderBox(box);
    EXPECT_TRUE(view.acceptsFirstResponder);
    EXPECT_TRUE(view.wantsUpdateLayer);
    [view becomeFirstResponder];
    [view resignFirstResponder];
    NSEvent* event = [[NSEvent alloc] init];
    fake::answer(event, "keyCode", 105);
    fake::answer(event, "charactersIgnoringModifiers", id(nil));
    [view keyDown:event];
    EXPECT_TRUE(fake::calls("-[NSResponder keyDown:]").empty()) << "not passed on";
    [view mouseEntered:event];
    [view mouseExited:event];
    EXPECT_EQ(told, "became resigned 105 entered exited");

    NSWindow* window = [[NSWindow alloc] init];
    fake::answer("-[NSView window]", window);
    [view mouseDown:event];
    EXPECT_TRUE(fake::calls("-[NSWindow makeFirstResponder:]").empty());
    wantsFocus = true;
    [view mouseDown:event];
    EXPECT_EQ(fake::lastCall("-[NSWindow makeFirstResponder:]").object(0), view);

    [window makeFirstResponder:nil];

    RBMacBoxView* plain = renderBox({});
    EXPECT_EQ(plain, view);
    EXPECT_FALSE(view.acceptsFirstResponder);
    fake::forgetCalls();
    [view keyDown:event];
    EXPECT_EQ(fake::calls("-[NSResponder keyDown:]").size(), 1u);
}

TEST_F(ViewTest, aBoxTracksTheMouseInItsVisibleRectangle) {
    BoxView box;
    box.mouseEntered = [] {};
    RBMacBoxView* view = renderBox(box);
    NSTrackingArea* old = fake::lastCall("-[NSView addTrackingArea:]").object(0);
    EXPECT_EQ(view.trackingAreas.count, 1u);
    fake::forgetCalls();
    [view updateTrackingAreas];
    EXPECT_EQ(fake::lastCall("-[NSView removeTrackingArea:]").object(0), old);
    const auto made = fake::lastCall("-[NSTrackingArea initWithRect:options:owner:userInfo:]");
    EXPECT_EQ(made.integer(1), NSTrackingMouseEnteredAndExited | NSTrackingActiveInActiveApp | NSTrackingInVisibleRect);
    EXPECT_EQ(made.object(2), view);
    EXPECT_EQ(fake::calls("-[NSView addTrackingArea:]").size(), 1u);
}

TEST_F(ViewTest, aBoxDrawsItsLayerAndAsksForItsLook) {
    int looks = 0;
    BoxView box;
    box.layer = Layer::create();
    box.updateLayer = [&] { ++looks; };
    RBMacBoxView* view = renderBox(box);
    EXPECT_NE(box.layer->host(), nullptr);
    [view updateLayer];
    EXPECT_EQ(looks, 1);
    fake::forgetCalls();
    [view viewDidChangeEffectiveAppearance];
    EXPECT_EQ(fake::lastCall("-[NSView setNeedsDisplay:]").integer(0), 1);
    LayerHost* host = box.layer->host();
    renderBox(box);
    EXPECT_EQ(box.layer->host(), host) << "shown as before";

    node_ = nullptr;
    EXPECT_EQ(box.layer->host(), nullptr);
    [view updateLayer];
    EXPECT_EQ(looks, 1) << "the product isn't called any more";
}

TEST_F(ViewTest, windowsFindTheirFirstResponderByName) {
    MacWindows windows;
    bool closed = false;
    const auto window = windows.createWindow({.contentSize = {300, 200},
                                              .title = "标题",
                                              .closable = false,
                                              .resizable = true,
                                              .miniaturizable = true,
                                              .willClose = [&] { closed = true; }});
    const auto made = fake::lastCall("-[NSWindow initWithContentRect:styleMask:backing:defer:]");
    EXPECT_EQ(made.integer(1), NSWindowStyleMaskTitled | NSWindowStyleMaskResizable | NSWindowStyleMaskMiniaturizable);
    BoxView box;
    box.acceptsFirstResponder = true;
    StackView stack;
    stack.children.push_back(label("a"));
    stack.children[0].identifier = "label";
    stack.children.push_back({.content = box, .identifier = "field"});
    window->setContent({.content = stack});
    fake::answer("-[NSWindow makeFirstResponder:]", true);
    EXPECT_FALSE(window->makeFirstResponder("nobody"));
    EXPECT_FALSE(window->makeFirstResponder("label"));
    EXPECT_TRUE(window->makeFirstResponder("field"));
    NSWindow* native = made.receiver();
    [native.delegate windowWillClose:[NSNotification new]];
    EXPECT_TRUE(closed);
}

} // namespace

} // namespace rb
