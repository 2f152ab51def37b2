#pragma once

#include <QString>

#include <optional>

namespace rb {

// What GTK's settings file says about the look of programs, for sessions that no desktop tells Qt about.
struct GtkSettings {
    std::optional<bool> prefersDark; // nothing when the settings don't say
    QString fontFamily;              // may be empty
    QString iconTheme;               // likewise

    // GTK_THEME, then GTK 4's file, then GTK 3's.
    static GtkSettings ofSession();
    static GtkSettings parse(const QString& settingsIni);
};

} // namespace rb
