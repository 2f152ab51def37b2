#include "desktops/linux/BarOrder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace rb {

namespace {

using testing::ElementsAre;

TEST(BarOrderTest, NewNamesStandAtTheLeftEndAndKnownOnesKeepTheirPlaces) {
    BarOrder order({"status", "chevron"});
    order.arrive("mail");
    order.arrive("chevron");
    EXPECT_THAT(order.names(), ElementsAre("status", "chevron", "mail"));
    EXPECT_LT(order.place("chevron"), order.place("mail"));
    EXPECT_GT(order.place("never seen"), order.place("mail"));
}

TEST(BarOrderTest, ThoseThatAreAbsentStayBesideTheirNeighbours) {
    BarOrder order({"late", "status", "chevron", "quiet", "absent", "dot", "mail"});
    order.arrange({"status", "chevron", "mail", "dot"}); // the user moved the mail right of the dot
    EXPECT_THAT(order.names(), ElementsAre("late", "status", "chevron", "quiet", "absent", "mail", "dot"));
    order.arrange({"dot", "mail", "chevron", "status", "new"});
    EXPECT_THAT(order.names(), ElementsAre("late", "dot", "mail", "chevron", "quiet", "absent", "status", "new"));
}

TEST(BarOrderTest, NamesFromOtherProgramsAreTamed) {
    EXPECT_EQ(BarOrder::usableName(""), "?");
    EXPECT_EQ(BarOrder::usableName("a\nb\x7F"), "ab");
    const std::string chinese = BarOrder::usableName("x" + std::string(1000, 'y') + "栏");
    EXPECT_EQ(chinese.size(), BarOrder::longestName);
    std::string many;
    for (int i = 0; i < 40; ++i) {
        many += "栏"; // three bytes each
    }
    EXPECT_EQ(BarOrder::usableName(many).size() % 3, 0U) << "cut between characters";
    EXPECT_LE(BarOrder::usableName(many).size(), BarOrder::longestName + 4);

    BarOrder order({"good", "bad\n", "", "good"});
    EXPECT_THAT(order.names(), ElementsAre("good"));
    for (int i = 0; i < 500; ++i) {
        order.arrive(std::to_string(i));
    }
    EXPECT_EQ(order.names().size(), BarOrder::mostNames);
    EXPECT_EQ(order.place("good"), 0U);
}

} // namespace

} // namespace rb
