#pragma once

#include "tests/contract/DesktopUnderTest.h"

#include <optional>
#include <vector>

namespace rb {

class AlertsContract : public ContractTest {
protected:
    Alerts& alerts() { return desktop().alerts; }
    bool waitForAlert(const std::string& messageText) {
        return user().until([&] {
            const auto shown = user().alertOnScreen();
            return shown && shown->messageText == messageText;
        });
    }
};

TEST_P(AlertsContract, TheRunLoopKeepsRunningWhileAnAlertWaits) {
    std::optional<std::size_t> answer;
    int ticks = 0;
    const Handle timer = loop().every(0.01, 0, [&] { ++ticks; });
    const Alert alert{.messageText = "Q", .informativeText = "why", .buttons = {{.title = "A"}, {.title = "B"}}};
    alerts().runModal(alert, [&](std::size_t button) { answer = button; });
    EXPECT_EQ(answer, std::nullopt) << "asking doesn't block";
    ASSERT_TRUE(waitForAlert("Q"));
    EXPECT_EQ(user().alertOnScreen(), alert);
    const int before = ticks;
    EXPECT_TRUE(user().until([&] { return ticks > before + 3; }));
    EXPECT_EQ(answer, std::nullopt);
    user().answerAlert(1);
    EXPECT_TRUE(user().until([&] { return answer == 1; }));
    EXPECT_EQ(user().alertOnScreen(), std::nullopt);
}

TEST_P(AlertsContract, AlertsComeUpOneAfterAnother) {
    std::string answers;
    const auto ask = [&](const std::string& name, std::vector<AlertButton> buttons) {
        alerts().runModal({.messageText = name, .buttons = std::move(buttons)},
                          [&answers, name](std::size_t button) { answers += name + std::to_string(button) + " "; });
    };
    ask("first", {{.title = "A"}, {.title = "B"}, {.title = "C"}});
    ask("second", {});
    ASSERT_TRUE(waitForAlert("first"));
    user().closeAlert();
    ASSERT_TRUE(waitForAlert("second"));
    EXPECT_EQ(answers, "first2 ") << "closing chooses the last button";
    ask("third", {{.title = "A"}});
    user().answerAlert(0);
    ASSERT_TRUE(waitForAlert("third"));
    user().closeAlert();
    EXPECT_TRUE(user().until([&] { return answers == "first2 second0 third0 "; })) << answers;
}

TEST_P(AlertsContract, AnAnswerMayAskAgain) {
    std::string answers;
    alerts().runModal({.messageText = "outer"}, [&](std::size_t) {
        answers += "outer ";
        alerts().runModal({.messageText = "inner"}, [&](std::size_t) { answers += "inner"; });
    });
    ASSERT_TRUE(waitForAlert("outer"));
    user().answerAlert(0);
    ASSERT_TRUE(waitForAlert("inner"));
    user().answerAlert(0);
    EXPECT_TRUE(user().until([&] { return answers == "outer inner"; }));
}

} // namespace rb
