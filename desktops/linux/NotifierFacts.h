#pragma once

#include "desktops/linux/NotifierTypes.h"

#include <QImage>
#include <QString>
#include <QVariantMap>

namespace rb {

// What another program's item says about itself. Anything may be missing or of a wrong type; then it is empty here.
struct NotifierFacts {
    QString id;
    QString title;
    QString status; // "Active", "Passive", "NeedsAttention"
    QString iconName;
    QString attentionIconName;
    QString themePath; // of a folder with the program's own icons
    NotifierPixmaps icon;
    NotifierPixmaps attentionIcon;
    QString toolTip;  // plain text
    QString menuPath; // empty without a menu
    bool itemIsMenu = false;
};

// From the answer to GetAll. Pure function.
NotifierFacts readNotifierFacts(const QVariantMap& properties);

// The picture of the set that suits a square of that many pixels best; null when none is usable. Sizes that don't fit
// the bytes and ones beyond any icon's are unusable.
QImage bestPixmap(const NotifierPixmaps& pixmaps, int side);

} // namespace rb
