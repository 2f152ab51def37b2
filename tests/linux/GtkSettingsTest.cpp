#include "desktops/linux/GtkSettings.h"

#include <gtest/gtest.h>

namespace rb {

namespace {

TEST(GtkSettings, DarkIsWhatEitherTheMarkOrTheThemesNameSays) {
    const std::pair<const char*, std::optional<bool>> cases[] = {
        {"[Settings]\ngtk-application-prefer-dark-theme=1\n", true},
        {"[Settings]\r\ngtk-application-prefer-dark-theme = True\r\n", true},
        {"[Settings]\ngtk-theme-name=Adwaita-dark\ngtk-application-prefer-dark-theme=0\n", true},
        {"[Settings]\ngtk-theme-name=Adwaita:dark\n", true},
        {"[Settings]\ngtk-theme-name=Darkish\n", false},
        {"[Settings]\ngtk-application-prefer-dark-theme=false", false},
        {"[Settings]\n#gtk-application-prefer-dark-theme=1\n=1\n", std::nullopt},
        {"[Other]\ngtk-application-prefer-dark-theme=1\n", std::nullopt},
        {"gtk-application-prefer-dark-theme=1\n", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [file, dark] : cases) {
        EXPECT_EQ(GtkSettings::parse(QString::fromUtf8(file)).prefersDark, dark) << file;
    }
}

TEST(GtkSettings, AFontIsItsFamilyWithoutStyleAndSize) {
    const std::pair<const char*, const char*> cases[] = {
        {"Cantarell 11", "Cantarell"},
        {"Noto Sans CJK SC Bold Italic 10.5", "Noto Sans CJK SC"},
        {"文泉驿微米黑, 10", "文泉驿微米黑"},
        {"Bold 10", "Bold"},
        {"Source Sans 3", "Source Sans"}, // indistinguishable from a size; the fallback is the family without it
        {"  ", ""},
    };
    for (const auto& [name, family] : cases) {
        const QString file = QStringLiteral("[Settings]\ngtk-font-name=") + QString::fromUtf8(name);
        EXPECT_EQ(GtkSettings::parse(file).fontFamily.toStdString(), family) << name;
    }
    EXPECT_EQ(GtkSettings::parse(QStringLiteral("[Settings]\ngtk-icon-theme-name = Papirus\n")).iconTheme, "Papirus");
}

} // namespace

} // namespace rb
