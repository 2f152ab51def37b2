#include "desktops/linux/KeyEquivalent.h"

#include <QInputDevice>
#include <gtest/gtest.h>

namespace rb {

namespace {

QKeyEvent press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    static const QInputDevice keyboard; // without an application Qt would make one and never free it
    return {QEvent::KeyPress, key, modifiers, 0, 0, 0, {}, false, 1, &keyboard};
}

TEST(KeyEquivalent, IsShownAsLinuxNamesTheKeys) {
    EXPECT_EQ(keyEquivalentText({.keyEquivalent = ","}).toStdString(), "Ctrl+,");
    EXPECT_EQ(keyEquivalentText(
                  {.keyEquivalent = "q",
                   .keyEquivalentModifiers = CommandModifier | OptionModifier | ShiftModifier | ControlModifier})
                  .toStdString(),
              "Super+Ctrl+Alt+Shift+Q");
    EXPECT_EQ(keyEquivalentText({.keyEquivalent = "1", .keyEquivalentModifiers = NoModifiers}).toStdString(), "1");
    EXPECT_EQ(keyEquivalentText({.title = "no key"}).toStdString(), "");
}

TEST(KeyEquivalent, AnswersToExactlyItsModifiers) {
    const MenuItem quit{.keyEquivalent = "q"};
    EXPECT_TRUE(isKeyEquivalent(press(Qt::Key_Q, Qt::ControlModifier), quit));
    EXPECT_FALSE(isKeyEquivalent(press(Qt::Key_Q, Qt::NoModifier), quit));
    EXPECT_FALSE(isKeyEquivalent(press(Qt::Key_Q, Qt::ControlModifier | Qt::ShiftModifier), quit));
    EXPECT_FALSE(isKeyEquivalent(press(Qt::Key_W, Qt::ControlModifier), quit));
    EXPECT_TRUE(isKeyEquivalent(press(Qt::Key_Q, Qt::ControlModifier | Qt::KeypadModifier), quit))
        << "where the key stands doesn't count";
    const MenuItem first{.keyEquivalent = "1", .keyEquivalentModifiers = OptionModifier};
    EXPECT_TRUE(isKeyEquivalent(press(Qt::Key_1, Qt::AltModifier), first));
    EXPECT_FALSE(isKeyEquivalent(press(Qt::Key_1, Qt::MetaModifier), first));
    EXPECT_FALSE(isKeyEquivalent(press(Qt::Key_unknown, Qt::ControlModifier), MenuItem{}));
}

} // namespace

} // namespace rb
