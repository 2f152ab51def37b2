#include "desktops/linux/ImportedMenu.h"

#include <QDataStream>
#include <QIODevice>
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

class ImportedMenuTest : public testing::Test {
protected:
    const std::vector<std::shared_ptr<MenuItem>>& items() { return menu.root()->items(); }
    void open(const MenuItem& item) { item.submenu->needsUpdate(*item.submenu); }

    std::vector<int> chosen;
    std::vector<int> opened;
    ImportedMenu menu{
        {.choose = [this](int id) { chosen.push_back(id); }, .aboutToShow = [this](int id) { opened.push_back(id); }}};
};

TEST_F(ImportedMenuTest, ShowsWhatTheLayoutSaysAndTellsWhatWasChosen) {
    menu.take(0,
              line(0, {},
                   {line(1, {{"label", "_Open __all"}}), line(2, {{"type", "separator"}}),
                    line(3, {{"label", "Off"}, {"enabled", false}}), line(4, {{"label", "Hidden"}, {"visible", false}}),
                    line(5, {{"label", "Loud"}, {"toggle-type", "checkmark"}, {"toggle-state", 1}}),
                    line(6, {{"label", "More"}, {"children-display", "submenu"}}, {line(7, {{"label", "Inner"}})}),
                    line(8, {{"label", "退出(_Q)"}, {"toggle-type", "radio"}, {"toggle-state", 1}}),
                    line(9, {{"label", "f(x) _"}, {"toggle-type", "checkmark"}, {"toggle-state", -1}})}));
    ASSERT_EQ(items().size(), 7U);
    EXPECT_EQ(items()[0]->title, "Open _all");
    EXPECT_EQ(importedRow(*items()[0])->mnemonic, QLatin1Char('O'));
    EXPECT_TRUE(items()[1]->separator);
    EXPECT_FALSE(menu.root()->isEnabled(*items()[2]));
    EXPECT_TRUE(menu.root()->isEnabled(*items()[0]));
    EXPECT_TRUE(items()[3]->on);
    EXPECT_FALSE(importedRow(*items()[3])->radio);
    EXPECT_EQ(items()[5]->title, "退出") << "the letter in brackets is for the keyboard";
    EXPECT_EQ(importedRow(*items()[5])->mnemonic, QLatin1Char('Q'));
    EXPECT_TRUE(importedRow(*items()[5])->radio);
    EXPECT_EQ(items()[6]->title, "f(x) ");
    EXPECT_TRUE(importedRow(*items()[6])->mixed);
    EXPECT_FALSE(items()[6]->on);
    ASSERT_TRUE(items()[4]->submenu);
    MenuItem& inner = *items()[4]->submenu->items().at(0);
    inner.action(inner);
    items()[0]->action(*items()[0]);
    EXPECT_THAT(chosen, testing::ElementsAre(7, 1));
}

TEST_F(ImportedMenuTest, ShortcutsAreThoseThatCanBePressed) {
    const auto shortcut = [](const QList<QStringList>& keys) { return QVariant::fromValue(keys); };
    menu.take(0, line(0, {},
                      {line(1, {{"label", "a"}, {"shortcut", shortcut({{"Control", "Shift", "s"}})}}),
                       line(2, {{"label", "b"}, {"shortcut", shortcut({{"Hyper", "s"}})}}),
                       line(3, {{"label", "c"}, {"shortcut", shortcut({{}})}}), line(4, {{"shortcut", 7}}),
                       line(5, {{"label", "d"}, {"shortcut", shortcut({{"Alt", "comma"}, {"F5"}})}})}));
    EXPECT_EQ(items()[0]->keyEquivalent, "s");
    EXPECT_EQ(items()[0]->keyEquivalentModifiers, std::uint32_t{CommandModifier} | ShiftModifier);
    EXPECT_EQ(items()[1]->keyEquivalent, "");
    EXPECT_EQ(items()[2]->keyEquivalent, "");
    EXPECT_EQ(items()[3]->keyEquivalent, "");
    EXPECT_EQ(items()[4]->keyEquivalent, ",");
}

TEST_F(ImportedMenuTest, SubmenusAreFilledWhenTheyOpen) {
    const QVariantMap later{{"label", "More"}, {"children-display", "submenu"}};
    menu.take(0, line(0, {}, {line(1, later), line(2, later)}));
    const auto submenu = items()[0]->submenu;
    ASSERT_EQ(submenu->items().size(), 1U) << "something to wait with";
    EXPECT_FALSE(submenu->isEnabled(*submenu->items()[0]));
    EXPECT_FALSE(menu.isFilled(1));
    open(*items()[0]);
    EXPECT_THAT(opened, testing::ElementsAre(1));
    menu.setAsked(1);
    menu.take(1, line(1, later, {line(3, {{"label", "late"}})}));
    EXPECT_EQ(items()[0]->submenu, submenu) << "the one that is open";
    EXPECT_EQ(submenu->items().at(0)->title, "late");
    EXPECT_TRUE(menu.isFilled(1));
    menu.take(1, line(1, later));
    EXPECT_EQ(submenu->items().at(0)->title, "（空）");
    menu.take(77, line(77, {}, {line(1, {})}));
    EXPECT_EQ(items().size(), 2U) << "a submenu that isn't there";
}

TEST_F(ImportedMenuTest, ChangesKeepTheItemsWhereTheOrderStays) {
    menu.take(0, line(0, {}, {line(1, {{"label", "one"}}), line(2, {{"label", "two"}}, {line(5, {{"label", "in"}})})}));
    const auto first = items()[0];
    const auto submenu = items()[1]->submenu;
    menu.take(0, line(0, {}, {line(1, {{"label", "uno"}}), line(2, {{"label", "due"}}, {line(5, {{"label", "in"}})})}));
    EXPECT_EQ(items()[0], first);
    EXPECT_EQ(first->title, "uno");
    menu.take(0, line(0, {}, {line(2, {{"label", "due"}}, {line(5, {{"label", "in"}})}), line(3, {{"label", "tre"}})}));
    ASSERT_EQ(items().size(), 2U);
    EXPECT_EQ(items()[0]->submenu, submenu);
    menu.take(0, line(0, {}, {line(2, {{"label", "plain"}}), line(3, {{"label", "tre"}})}));
    EXPECT_FALSE(items()[0]->submenu);
    EXPECT_TRUE(items()[0]->action);
}

TEST_F(ImportedMenuTest, LongAndDeepMenusEnd) {
    std::vector<ExportedItem> rows;
    for (int i = 1; i <= 5000; ++i) {
        rows.push_back(line(i, {{"label", QString::number(i)}}));
    }
    for (int round = 0; round < 2; ++round) {
        menu.take(0, line(0, {}, rows));
        ASSERT_EQ(items().size(), ImportedMenu::mostRows + 1);
        EXPECT_EQ(items().back()->title, "…");
        EXPECT_FALSE(menu.root()->isEnabled(*items().back()));
    }
    // Many long menus within one layout.
    std::vector<ExportedItem> menus;
    for (int i = 1; i <= 20; ++i) {
        menus.push_back(line(-i, {}, rows));
    }
    menu.take(0, line(0, {}, menus));
    std::size_t inAll = 0;
    for (const auto& item : items()) {
        inAll += 1 + item->submenu->items().size();
    }
    EXPECT_LE(inAll, ImportedMenu::mostRowsInAll + 2 * items().size());
}

// A program whose lines contain themselves sends them as deep as the bus lets it, or anew for every opening.
TEST_F(ImportedMenuTest, CyclesEnd) {
    ExportedItem nested = line(1, {{"label", "again"}});
    for (int level = 0; level < 40; ++level) {
        nested = line(1, {{"label", "again"}}, {nested});
    }
    menu.take(0, nested);
    int levels = 0;
    for (auto inner = menu.root(); inner; inner = inner->items().at(0)->submenu) {
        ++levels;
    }
    EXPECT_EQ(levels, ImportedMenu::mostLevels + 1);
    for (int round = 0; round < 20; ++round) {
        menu.take(1, line(1, {}, {line(1, {{"label", "again"}, {"children-display", "submenu"}})}));
    }
    levels = 0;
    for (auto inner = menu.root(); inner; inner = inner->items().at(0)->submenu) {
        ++levels;
    }
    EXPECT_LE(levels, ImportedMenu::mostLevels + 1);
}

// The head of a bitmap of 100,000 pixels each way.
QByteArray hugePicture() {
    QByteArray bytes("BM");
    QDataStream stream(&bytes, QIODevice::Append);
    stream.setByteOrder(QDataStream::LittleEndian);
    constexpr qint32 side = 100000;
    stream << qint32{1000} << qint32{0} << qint32{54};
    stream << qint32{40} << side << side << qint16{1} << qint16{24};
    for (int i = 0; i < 6; ++i) {
        stream << qint32{0};
    }
    return bytes + QByteArray(1000, 'x');
}

TEST_F(ImportedMenuTest, GarbageMakesPlainRows) {
    ExportedItem root = line(0, {}, {line(1, {{"label", 5}, {"icon-data", QByteArray("no picture")}})});
    root.children.append(QDBusVariant(QStringLiteral("not a line")));
    menu.take(0, root);
    ASSERT_EQ(items().size(), 2U);
    EXPECT_EQ(items()[0]->image, Image{});
    EXPECT_EQ(items()[1]->title, "");
    menu.take(0, line(0, {}, {line(1, {{"icon-data", hugePicture()}})}));
    EXPECT_EQ(items()[0]->image, Image{});
}

} // namespace

} // namespace rb
