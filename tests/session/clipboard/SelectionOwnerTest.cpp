#include "desktops/linux/SelectionOwner.h"

#include "desktops/linux/XConnection.h"
#include "desktops/virtual/RunLoop.h"
#include "tests/session/frame/Session.h"
#include "tests/session/frame/Wait.h"

#include <QCoreApplication>

#include <cstdlib>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace rb {

namespace {

using testing::ElementsAre;

// The owner in this process with a clock of the test's own; what it gives is taken by another client of the server.
class SelectionOwnerTest : public testing::Test {
protected:
    SelectionOwnerTest() {
        ::setenv("DISPLAY", session_.display().c_str(), 1); // NOLINT(concurrency-mt-unsafe): before there are threads
        application_ = std::make_unique<QCoreApplication>(count_, words_.data());
        connection_ = XConnection::open();
        owner_ = std::make_unique<SelectionOwner>(*connection_, loop_, "CLIPBOARD");
        window_ = xcb_generate_id(x().connection());
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(x().connection(), XCB_COPY_FROM_PARENT, window_, x().root(), 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
        x().sync();
    }
    XClient& x() { return session_.x(); }

    // A text, and a picture that is made `seconds` later; null for one that can't be.
    void copy(double seconds, const SharedBytes& picture) {
        loop_.setBackgroundDelay(seconds);
        std::shared_ptr<PromisedBytes> promised =
            PromisedBytes::begin(loop_, [picture](const std::atomic<bool>&) { return picture; });
        promise_ = promised;
        const auto text = std::make_shared<const Bytes>(Bytes{'t', 'e', 'x', 't'});
        ASSERT_TRUE(owner_->take({{"UTF8_STRING", "UTF8_STRING", [text] { return PromisedBytes::settled(text); }},
                                  {"image/png", "image/png", [promised] { return promised; }, promised}}));
    }
    void ask(const std::string& target, const std::string& property) {
        xcb_convert_selection(x().connection(), window_, x().atom("CLIPBOARD"), x().atom(target), x().atom(property),
                              XCB_CURRENT_TIME);
        x().sync();
        pass(0);
    }
    // Whatever has come in is dealt with, and that time passes.
    void pass(double seconds) {
        connection_->serverTime(); // a round trip: what others sent before has arrived
        connection_->deliver();
        loop_.advance(seconds);
        collect();
    }
    void collect() {
        x().sync();
        while (const auto event = ownReply(xcb_poll_for_event(x().connection()))) {
            if ((event->response_type & 0x7F) == XCB_SELECTION_NOTIFY) {
                const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(*event);
                answers_.push_back(notify.property == XCB_ATOM_NONE ? "refused" : nameOf(notify.property));
            }
        }
    }
    std::string nameOf(xcb_atom_t atom) {
        const auto reply =
            ownReply(xcb_get_atom_name_reply(x().connection(), xcb_get_atom_name(x().connection(), atom), nullptr));
        return reply ? std::string(xcb_get_atom_name_name(reply.get()),
                                   static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())))
                     : "";
    }
    std::string content(const std::string& property) { return x().text(window_, property); }
    bool offersPicture() {
        ask("TARGETS", "LIST");
        const auto atoms = x().cardinals(window_, "LIST");
        return std::find(atoms.begin(), atoms.end(), x().atom("image/png")) != atoms.end();
    }
    // Since the last call: the properties that were named in answers, in their order.
    std::vector<std::string> answers() { return std::exchange(answers_, {}); }
    void ask(const std::vector<std::pair<std::string, std::string>>& pairs) {
        std::vector<xcb_atom_t> atoms;
        for (const auto& [target, property] : pairs) {
            atoms.push_back(x().atom(target));
            atoms.push_back(x().atom(property));
        }
        xcb_change_property(x().connection(), XCB_PROP_MODE_REPLACE, window_, x().atom("PAIRS"), x().atom("ATOM_PAIR"),
                            32, static_cast<std::uint32_t>(atoms.size()), atoms.data());
        ask("MULTIPLE", "PAIRS");
    }
    // Of the list of pairs: which were granted.
    std::vector<bool> granted() {
        std::vector<bool> found;
        const auto atoms = x().cardinals(window_, "PAIRS");
        for (std::size_t index = 1; index < atoms.size(); index += 2) {
            found.push_back(atoms[index] != XCB_ATOM_NONE);
        }
        return found;
    }

    const SharedBytes picture_ = std::make_shared<const Bytes>(Bytes{'p', 'n', 'g'});
    Session session_{{.bus = false, .windowManager = false, .f13 = false}};
    int count_ = 1;
    std::array<char, 5> name_{"test"};
    std::array<char*, 2> words_{name_.data(), nullptr};
    std::unique_ptr<QCoreApplication> application_;
    VirtualRunLoop loop_;
    std::unique_ptr<XConnection> connection_;
    std::unique_ptr<SelectionOwner> owner_;
    std::weak_ptr<PromisedBytes> promise_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    std::vector<std::string> answers_;
};

TEST_F(SelectionOwnerTest, WhoAsksForAPictureInTheMakingIsAnsweredWhenItIsThere) {
    copy(2, picture_);
    EXPECT_TRUE(offersPicture());
    ask("image/png", "A");
    ask("image/png", "B");
    ask("UTF8_STRING", "C");
    EXPECT_THAT(answers(), ElementsAre("LIST", "C")) << "nothing else waits";
    EXPECT_TRUE(owner_->isSending());
    pass(1.9);
    EXPECT_THAT(answers(), ElementsAre());
    pass(0.2);
    EXPECT_THAT(answers(), ElementsAre("A", "B"));
    EXPECT_EQ(content("A"), "png");
    EXPECT_EQ(content("B"), "png");
    EXPECT_EQ(content("C"), "text");
    EXPECT_FALSE(owner_->isSending());
    ask("image/png", "D");
    EXPECT_THAT(answers(), ElementsAre("D")) << "at once from now on";
}

TEST_F(SelectionOwnerTest, APictureThatCannotBeMadeIsRefusedAndOfferedNoLonger) {
    copy(2, nullptr);
    EXPECT_TRUE(offersPicture());
    ask("image/png", "A");
    pass(3);
    EXPECT_THAT(answers(), ElementsAre("LIST", "refused"));
    EXPECT_FALSE(offersPicture());
    ask("image/png", "A");
    ask("UTF8_STRING", "C");
    EXPECT_THAT(answers(), ElementsAre("LIST", "refused", "C"));
}

TEST_F(SelectionOwnerTest, SeveralAtOnceWaitForTheSlowestOfThem) {
    copy(2, picture_);
    ask({{"UTF8_STRING", "A"}, {"image/png", "B"}, {"image/unknown", "C"}});
    EXPECT_THAT(answers(), ElementsAre());
    pass(3);
    EXPECT_THAT(answers(), ElementsAre("PAIRS"));
    EXPECT_THAT(granted(), ElementsAre(true, true, false));
    EXPECT_EQ(content("A"), "text");
    EXPECT_EQ(content("B"), "png");
    copy(2, nullptr);
    ask({{"image/png", "B"}, {"UTF8_STRING", "A"}});
    pass(3);
    EXPECT_THAT(answers(), ElementsAre("PAIRS"));
    EXPECT_THAT(granted(), ElementsAre(false, true));
}

TEST_F(SelectionOwnerTest, WhoAskedInTimeIsAnsweredAfterTheSelectionIsLost) {
    copy(2, picture_);
    ask("image/png", "A");
    xcb_set_selection_owner(x().connection(), window_, x().atom("CLIPBOARD"), XCB_CURRENT_TIME);
    x().sync();
    pass(0);
    EXPECT_FALSE(promise_.expired());
    pass(3);
    EXPECT_THAT(answers(), ElementsAre("A"));
    EXPECT_EQ(content("A"), "png");
    EXPECT_TRUE(promise_.expired());
    // With nobody waiting it is given up at once.
    copy(2, picture_);
    xcb_set_selection_owner(x().connection(), window_, x().atom("CLIPBOARD"), XCB_CURRENT_TIME);
    x().sync();
    pass(0);
    EXPECT_TRUE(promise_.expired());
}

TEST_F(SelectionOwnerTest, NobodyWaitsForever) {
    copy(1000, picture_);
    ask({{"image/png", "A"}, {"UTF8_STRING", "B"}});
    ask("image/png", "C");
    pass(14.9);
    EXPECT_THAT(answers(), ElementsAre());
    pass(0.2);
    EXPECT_THAT(answers(), ElementsAre("PAIRS", "refused"));
    EXPECT_THAT(granted(), ElementsAre(false, true));
    EXPECT_TRUE(offersPicture()) << "it may still come";
}

TEST_F(SelectionOwnerTest, ARequestorThatDiedHarmsNobody) {
    copy(2, picture_);
    ask("image/png", "A");
    xcb_destroy_window(x().connection(), window_);
    x().sync();
    pass(3);
    window_ = x().root();
    ask("image/png", "B");
    pass(0);
    EXPECT_EQ(content("B"), "png");
}

TEST_F(SelectionOwnerTest, TheEndLeavesNobodyWaiting) {
    copy(1000, picture_);
    ask("image/png", "A");
    owner_->handOver(); // there is no manager
    collect();
    EXPECT_THAT(answers(), ElementsAre("refused"));
    EXPECT_TRUE(promise_.expired()) << "and nothing is made any more";
}

} // namespace

} // namespace rb
