#include "desktops/linux/NotifierFacts.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QTextDocumentFragment>
#include <QtEndian>

namespace rb {

namespace {

constexpr int largestSide = 1024;
constexpr qsizetype longestText = 512;

// Only what has exactly the expected type is unpacked: the library reads on past other ones.
template <typename Value>
Value unpack(const QVariant& value, const char* signature) {
    if (value.canConvert<Value>()) {
        return value.value<Value>();
    }
    if (value.userType() == qMetaTypeId<QDBusArgument>()) {
        const auto argument = value.value<QDBusArgument>();
        if (argument.currentSignature() == QLatin1String(signature)) {
            return qdbus_cast<Value>(argument);
        }
    }
    return {};
}

NotifierPixmaps pixmaps(const QVariant& value) {
    return unpack<NotifierPixmaps>(value, "a(iiay)");
}

QString plain(const QString& text) {
    const QString shortened = text.left(longestText);
    return Qt::mightBeRichText(shortened) ? QTextDocumentFragment::fromHtml(shortened).toPlainText() : shortened;
}

QString toolTipOf(const QVariant& value) {
    const auto toolTip = unpack<NotifierToolTip>(value, "(sa(iiay)ss)");
    const QString title = plain(toolTip.title);
    const QString text = plain(toolTip.text);
    return title.isEmpty() || text.isEmpty() ? title + text : title + QLatin1Char('\n') + text;
}

QString menuPathOf(const QVariant& value) {
    const QString path = value.canConvert<QDBusObjectPath>() ? value.value<QDBusObjectPath>().path() : value.toString();
    // What Qt says when there is none.
    return path == QLatin1String("/") || path == QLatin1String("/NO_DBUSMENU") ? QString() : path;
}

bool isUsable(const NotifierPixmap& pixmap) {
    return pixmap.width > 0 && pixmap.height > 0 && pixmap.width <= largestSide && pixmap.height <= largestSide &&
           pixmap.bytes.size() == qsizetype{4} * pixmap.width * pixmap.height;
}

} // namespace

NotifierFacts readNotifierFacts(const QVariantMap& properties) {
    const auto text = [&](const char* name) {
        return properties.value(QLatin1String(name)).toString().left(longestText);
    };
    NotifierFacts facts;
    facts.id = text("Id");
    facts.title = text("Title");
    facts.status = text("Status");
    facts.iconName = text("IconName");
    facts.attentionIconName = text("AttentionIconName");
    facts.themePath = text("IconThemePath");
    facts.icon = pixmaps(properties.value(QStringLiteral("IconPixmap")));
    facts.attentionIcon = pixmaps(properties.value(QStringLiteral("AttentionIconPixmap")));
    facts.toolTip = toolTipOf(properties.value(QStringLiteral("ToolTip")));
    facts.menuPath = menuPathOf(properties.value(QStringLiteral("Menu")));
    facts.itemIsMenu = properties.value(QStringLiteral("ItemIsMenu")).toBool();
    return facts;
}

QImage bestPixmap(const NotifierPixmaps& pixmaps, int side) {
    const NotifierPixmap* best = nullptr;
    for (const NotifierPixmap& pixmap : pixmaps) {
        if (!isUsable(pixmap)) {
            continue;
        }
        // The smallest that needn't grow, else the largest.
        const bool suffices = pixmap.width >= side;
        const bool bestSuffices = best != nullptr && best->width >= side;
        if (best == nullptr || (suffices && (!bestSuffices || pixmap.width < best->width)) ||
            (!suffices && !bestSuffices && pixmap.width > best->width)) {
            best = &pixmap;
        }
    }
    if (best == nullptr) {
        return {};
    }
    QImage image(best->width, best->height, QImage::Format_ARGB32);
    const auto* source = reinterpret_cast<const uchar*>(best->bytes.constData());
    for (int y = 0; y < best->height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < best->width; ++x, source += 4) {
            line[x] = qFromBigEndian<quint32>(source);
        }
    }
    return image;
}

} // namespace rb
