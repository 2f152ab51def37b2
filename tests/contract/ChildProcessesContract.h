#pragma once

#include "platform/ChildProcesses.h"
#include "tests/contract/DesktopUnderTest.h"

#include <string>
#include <utility>

namespace rb {

class ChildProcessesContract : public ContractTest {
protected:
    ChildProcesses& children() { return desktop().childProcesses; }
    ChildStart start(std::string program) {
        return {.program = std::move(program),
                .output = [this](std::string_view piece) { output_ += piece; },
                .ended = [this] { ++ends_; }};
    }
    [[nodiscard]] bool untilEnd() {
        return user().until([this] { return ends_ > 0; });
    }

    std::string output_;
    int ends_ = 0;
};

TEST_P(ChildProcessesContract, ArgumentsGoInAndOutputComesOutBeforeTheEnd) {
    ChildStart words = start(user().echoProgram());
    words.arguments = {"a b", "$HOME", "'", "剪贴板"};
    std::string atTheEnd;
    words.ended = [&] {
        ++ends_;
        atTheEnd = output_;
    };
    const auto child = children().start(std::move(words));
    ASSERT_TRUE(child);
    EXPECT_EQ(ends_, 0) << "never at once";
    ASSERT_TRUE(untilEnd());
    EXPECT_EQ(atTheEnd, "a b $HOME ' 剪贴板\n");
    EXPECT_FALSE(child->isRunning());
    child->write("nobody reads this");
    child->kill();
    user().live(0.05);
    EXPECT_EQ(ends_, 1);
}

TEST_P(ChildProcessesContract, InputIsPipedUntilItIsClosed) {
    ChildStart copy = start(user().catProgram());
    copy.pipesInput = true;
    const auto child = children().start(std::move(copy));
    ASSERT_TRUE(child);
    child->write("one\n");
    EXPECT_TRUE(user().until([this] { return output_ == "one\n"; })) << output_;
    child->write("two");
    child->closeInput();
    child->write("too late");
    ASSERT_TRUE(untilEnd());
    EXPECT_EQ(output_, "one\ntwo");
}

TEST_P(ChildProcessesContract, WithoutAPipeThereIsNothingToRead) {
    const auto child = children().start(start(user().catProgram()));
    ASSERT_TRUE(untilEnd());
    EXPECT_EQ(output_, "");
}

TEST_P(ChildProcessesContract, KillingEndsItAndTheEndIsTold) {
    ChildStart copy = start(user().catProgram());
    copy.pipesInput = true;
    const auto child = children().start(std::move(copy));
    user().live(0.05);
    EXPECT_TRUE(child->isRunning());
    child->kill();
    child->kill();
    EXPECT_TRUE(untilEnd());
    EXPECT_FALSE(child->isRunning());
    EXPECT_EQ(ends_, 1);
}

TEST_P(ChildProcessesContract, LettingGoClosesTheInputAndSilencesIt) {
    ChildStart copy = start(user().catProgram());
    copy.pipesInput = true;
    auto child = children().start(std::move(copy));
    child->write("unheard");
    child.reset();
    user().live(0.2);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(ends_, 0);
}

TEST_P(ChildProcessesContract, TheEndMayDropTheProcess) {
    std::unique_ptr<ChildProcess> child;
    ChildStart words = start(user().echoProgram());
    words.ended = [&] {
        child.reset();
        ++ends_;
    };
    child = children().start(std::move(words));
    EXPECT_TRUE(untilEnd());
    EXPECT_FALSE(child);
}

TEST_P(ChildProcessesContract, OutputGoesIntoATemporaryFileThatIsTakenOnce) {
    const std::string name = "rookbay-contract-" + std::to_string(reinterpret_cast<std::uintptr_t>(this)) + ".json";
    constexpr std::size_t limit = 1000;
    const auto file = children().createTemporaryFile(name);
    ASSERT_TRUE(file);
    EXPECT_FALSE(children().createTemporaryFile(name)) << "never one that is there";
    ChildStart words = start(user().echoProgram());
    words.arguments = {"{}"};
    words.outputFile = *file;
    const auto child = children().start(std::move(words));
    ASSERT_TRUE(untilEnd());
    EXPECT_EQ(output_, "");
    EXPECT_EQ(children().takeTemporaryFile(*file, limit), "{}\n");
    EXPECT_EQ(children().takeTemporaryFile(*file, limit), std::nullopt);

    ASSERT_TRUE(children().createTemporaryFile(name));
    ends_ = 0;
    ChildStart more = start(user().echoProgram());
    more.arguments = {std::string(100, 'x')};
    more.outputFile = *file;
    const auto talker = children().start(std::move(more));
    ASSERT_TRUE(untilEnd());
    EXPECT_EQ(children().takeTemporaryFile(*file, 99), std::nullopt) << "too long";
    EXPECT_EQ(children().takeTemporaryFile(*file, limit), std::nullopt) << "and gone";
}

TEST_P(ChildProcessesContract, WhatIsNotThereIsNotStarted) {
    EXPECT_EQ(children().resourcePath("NoSuchHelper"), std::nullopt);
    EXPECT_EQ(children().start(start("/nonexistent/NoSuchHelper")), nullptr);
    user().live(0.05);
    EXPECT_EQ(ends_, 0);
}

} // namespace rb
