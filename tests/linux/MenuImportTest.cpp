#include "desktops/linux/MenuImport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace rb {

namespace {

ExportedItem line(int id, const QVariantMap& properties, const std::vector<ExportedItem>& children = {}) {
    ExportedItem item{id, properties, {}};
    for (const ExportedItem& child : children) {
        item.children.append(QDBusVariant(QVariant::fromValue(child)));
    }
    return item;
}

TEST(MenuImportTest, ShowsWhatTheLayoutSaysAndTellsWhatWasChosen) {
    std::vector<int> chosen;
    const auto menu = menuFrom(
        line(0, {},
             {line(1, {{"label", "_Open __all"}}), line(2, {{"type", "separator"}}),
              line(3, {{"label", "Off"}, {"enabled", false}}), line(4, {{"label", "Hidden"}, {"visible", false}}),
              line(5, {{"label", "Loud"}, {"toggle-type", "checkmark"}, {"toggle-state", 1}}),
              line(6, {{"label", "More"}, {"children-display", "submenu"}}, {line(7, {{"label", "Inner"}})})}),
        [&](int id) { chosen.push_back(id); });
    ASSERT_EQ(menu->items().size(), 5U);
    EXPECT_EQ(menu->items()[0]->title, "Open _all");
    EXPECT_TRUE(menu->items()[1]->separator);
    EXPECT_FALSE(menu->isEnabled(*menu->items()[2]));
    EXPECT_TRUE(menu->isEnabled(*menu->items()[0]));
    EXPECT_TRUE(menu->items()[3]->on);
    ASSERT_TRUE(menu->items()[4]->submenu);
    MenuItem& inner = *menu->items()[4]->submenu->items().at(0);
    inner.action(inner);
    menu->items()[0]->action(*menu->items()[0]);
    EXPECT_THAT(chosen, testing::ElementsAre(7, 1));
}

TEST(MenuImportTest, LongAndDeepMenusEnd) {
    std::vector<ExportedItem> rows;
    for (int i = 1; i <= 5000; ++i) {
        rows.push_back(line(i, {{"label", QString::number(i)}}));
    }
    const auto menu = menuFrom(line(0, {}, rows), [](int) {});
    ASSERT_EQ(menu->items().size(), MenuImport::mostRows + 1);
    EXPECT_EQ(menu->items().back()->title, "…");
    EXPECT_FALSE(menu->isEnabled(*menu->items().back()));

    // A program whose lines contain themselves sends them as deep as the bus lets it.
    ExportedItem nested = line(1, {{"label", "again"}});
    for (int level = 0; level < 40; ++level) {
        nested = line(1, {{"label", "again"}}, {nested});
    }
    int levels = 0;
    for (auto inner = menuFrom(nested, [](int) {}); inner; inner = inner->items().at(0)->submenu) {
        ++levels;
    }
    EXPECT_EQ(levels, MenuImport::mostLevels + 1);
}

TEST(MenuImportTest, GarbageMakesPlainRows) {
    ExportedItem root = line(0, {}, {line(1, {{"label", 5}, {"icon-data", QByteArray("no picture")}})});
    root.children.append(QDBusVariant(QStringLiteral("not a line")));
    const auto menu = menuFrom(root, [](int) {});
    ASSERT_EQ(menu->items().size(), 2U);
    EXPECT_EQ(menu->items()[0]->image, Image{});
    EXPECT_EQ(menu->items()[1]->title, "");
}

} // namespace

} // namespace rb
