#include "desktops/linux/ImportedMenu.h"

#include "desktops/linux/Bitmap.h"
#include "desktops/linux/ThemeIcons.h"

#include <QBuffer>
#include <QImageReader>
#include <QPainter>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace rb {

namespace {

constexpr int iconSide = 16;
constexpr int largestIcon = 512;               // pixels a side
constexpr qsizetype largestIconData = 1 << 20; // bytes
constexpr int mostIconPixels = 8 << 20;        // decoded for one layout
constexpr qsizetype longestLabel = 400;
constexpr const char* awaited = "…";
constexpr const char* empty = "（空）";

struct Label {
    QString text;
    QChar mnemonic;
};

// An underscore marks the letter to type, two of them are one. East Asian texts have that letter in brackets behind
// them, which says nothing to a reader.
Label labelFrom(const QString& marked) {
    Label label;
    qsizetype at = -1;
    for (qsizetype i = 0; i < std::min(marked.size(), longestLabel); ++i) {
        const bool isMark = marked[i] == QLatin1Char('_') && i + 1 < marked.size();
        if (!isMark) {
            if (marked[i] != QLatin1Char('_')) {
                label.text += marked[i];
            }
            continue;
        }
        ++i;
        if (marked[i] != QLatin1Char('_') && label.mnemonic.isNull()) {
            label.mnemonic = marked[i].toUpper();
            at = label.text.size();
        }
        label.text += marked[i];
    }
    if (at > 1 && at + 1 < label.text.size() && label.text[at - 1] == QLatin1Char('(') &&
        label.text[at + 1] == QLatin1Char(')')) {
        label.text.remove(at - 1, 3);
    }
    label.text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return label;
}

// The first combination of "shortcut": names of modifiers and of one key.
void writeShortcut(MenuItem& item, const QVariant& value) {
    item.keyEquivalent.clear();
    item.keyEquivalentModifiers = NoModifiers;
    QList<QStringList> combinations;
    if (value.canConvert<QList<QStringList>>()) {
        combinations = value.value<QList<QStringList>>();
    } else if (value.userType() == qMetaTypeId<QDBusArgument>()) {
        const auto argument = value.value<QDBusArgument>();
        if (argument.currentSignature() == QLatin1String("aas")) {
            combinations = qdbus_cast<QList<QStringList>>(argument);
        }
    }
    if (combinations.isEmpty() || combinations.constFirst().isEmpty()) {
        return;
    }
    static const std::map<QString, std::uint32_t> modifiers{{QStringLiteral("Control"), CommandModifier},
                                                            {QStringLiteral("Alt"), OptionModifier},
                                                            {QStringLiteral("Shift"), ShiftModifier},
                                                            {QStringLiteral("Super"), ControlModifier}};
    static const std::map<QString, QString> keys{
        {QStringLiteral("comma"), QStringLiteral(",")}, {QStringLiteral("period"), QStringLiteral(".")},
        {QStringLiteral("plus"), QStringLiteral("+")},  {QStringLiteral("minus"), QStringLiteral("-")},
        {QStringLiteral("slash"), QStringLiteral("/")}, {QStringLiteral("equal"), QStringLiteral("=")}};
    QStringList combination = combinations.constFirst();
    constexpr qsizetype longestKey = 12;
    const QString key = combination.takeLast();
    if (key.isEmpty() || key.size() > longestKey) {
        return;
    }
    for (const QString& name : std::as_const(combination)) {
        const auto found = modifiers.find(name);
        if (found == modifiers.end()) {
            return;
        }
        item.keyEquivalentModifiers |= found->second;
    }
    const auto named = keys.find(key);
    item.keyEquivalent = (named == keys.end() ? key : named->second).toStdString();
}

ExportedItem unpacked(const QDBusVariant& child) {
    const QVariant value = child.variant();
    if (value.userType() == qMetaTypeId<QDBusArgument>()) {
        const auto argument = value.value<QDBusArgument>();
        return argument.currentSignature() == QLatin1String("(ia{sv}av)") ? qdbus_cast<ExportedItem>(argument)
                                                                          : ExportedItem{};
    }
    return value.value<ExportedItem>();
}

bool hasSubmenu(const ExportedItem& line) {
    return !line.children.isEmpty() ||
           line.properties.value(QStringLiteral("children-display")).toString() == QLatin1String("submenu");
}

// Depth first; null when there is none.
std::shared_ptr<Menu> submenuOf(const Menu& menu, int id) {
    for (const auto& item : menu.items()) {
        if (!item->submenu) {
            continue;
        }
        if (item->tag == id) {
            return item->submenu;
        }
        if (auto found = submenuOf(*item->submenu, id)) {
            return found;
        }
    }
    return nullptr;
}

// -1 when it isn't there.
int levelOf(const Menu& menu, const Menu& wanted) {
    for (const auto& item : menu.items()) {
        if (!item->submenu) {
            continue;
        }
        const int below = item->submenu.get() == &wanted ? 0 : levelOf(*item->submenu, wanted);
        if (below >= 0) {
            return below + 1;
        }
    }
    return -1;
}

} // namespace

const ImportedRow* importedRow(const MenuItem& item) {
    return std::any_cast<ImportedRow>(&item.representedObject);
}

// The limits of one layout, as they are used up.
struct ImportedMenu::Taking {
    int levels = mostLevels;
    std::size_t rows = mostRowsInAll;
    int iconPixels = mostIconPixels;
    QColor foreground;

    Image icon(const QVariantMap& properties);
};

Image ImportedMenu::Taking::icon(const QVariantMap& properties) {
    QImage image;
    QByteArray data = properties.value(QStringLiteral("icon-data")).toByteArray();
    if (!data.isEmpty() && data.size() <= largestIconData) {
        QBuffer buffer(&data);
        QImageReader reader(&buffer);
        const QSize size = reader.size();
        const bool isIcon = size.isValid() && size.width() <= largestIcon && size.height() <= largestIcon;
        if (isIcon && size.width() * size.height() <= iconPixels) {
            iconPixels -= size.width() * size.height();
            image = reader.read();
        }
    }
    const QString name = properties.value(QStringLiteral("icon-name")).toString();
    if (image.isNull() && !name.isEmpty()) {
        image = iconFromTheme(name).pixmap(iconSide).toImage();
        if (!image.isNull() && foreground.isValid() && name.endsWith(QLatin1String("-symbolic"))) {
            image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
            QPainter painter(&image);
            painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
            painter.fillRect(image.rect(), foreground);
        }
    }
    if (image.isNull()) {
        return {};
    }
    return std::make_shared<const LinuxBitmap>(
        image.scaled(iconSide, iconSide, Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

ImportedMenu::ImportedMenu(Listener listener, const QColor& foreground)
    : listener_(std::move(listener))
    , foreground_(foreground)
    , root_(std::make_shared<Menu>()) {
    registerNotifierTypes();
    root_->autoenablesItems = false;
}

ImportedMenu::~ImportedMenu() = default;

void ImportedMenu::take(int id, const ExportedItem& layout) {
    const std::shared_ptr<Menu> menu = id == 0 ? root_ : submenuOf(*root_, id);
    if (menu) {
        const int level = id == 0 ? 0 : levelOf(*root_, *menu);
        Taking taking{.levels = mostLevels - level, .foreground = foreground_};
        fill(*menu, layout, taking);
    }
}

bool ImportedMenu::isFilled(int id) const {
    const std::shared_ptr<Menu> menu = id == 0 ? root_ : submenuOf(*root_, id);
    return menu && !menu->items().empty() && menu->items().front()->title != awaited;
}

void ImportedMenu::write(MenuItem& item, const ExportedItem& line, Taking& taking) {
    const QVariantMap& properties = line.properties;
    const Label label = labelFrom(properties.value(QStringLiteral("label")).toString());
    const QString toggle = properties.value(QStringLiteral("toggle-type")).toString();
    const int state = properties.value(QStringLiteral("toggle-state"), 0).toInt();
    item.tag = line.id;
    item.separator = properties.value(QStringLiteral("type")).toString() == QLatin1String("separator");
    item.title = label.text.toStdString();
    item.enabled = properties.value(QStringLiteral("enabled"), true).toBool();
    item.on = !toggle.isEmpty() && state == 1;
    item.image = taking.icon(properties);
    item.representedObject = ImportedRow{.mnemonic = label.mnemonic,
                                         .radio = toggle == QLatin1String("radio"),
                                         .mixed = toggle == QLatin1String("checkmark") && state != 0 && state != 1};
    writeShortcut(item, properties.value(QStringLiteral("shortcut")));
    item.action = nullptr;
    if (hasSubmenu(line) && taking.levels > 0) {
        if (!item.submenu) {
            item.submenu = std::make_shared<Menu>();
            item.submenu->autoenablesItems = false;
            item.submenu->needsUpdate = lifetime_.guard([this, id = line.id](Menu&) {
                if (listener_.aboutToShow) {
                    listener_.aboutToShow(id);
                }
            });
        }
        --taking.levels;
        fill(*item.submenu, line, taking);
        ++taking.levels;
        return;
    }
    item.submenu.reset();
    if (!item.separator) {
        item.action = [choose = listener_.choose, id = line.id](MenuItem&) { choose(id); };
    }
}

void ImportedMenu::fill(Menu& menu, const ExportedItem& layout, Taking& taking) {
    std::vector<ExportedItem> lines;
    bool more = false;
    for (const QDBusVariant& child : layout.children) {
        more = lines.size() == mostRows || taking.rows == 0;
        if (more) {
            break;
        }
        ExportedItem line = unpacked(child);
        if (line.properties.value(QStringLiteral("visible"), true).toBool()) {
            lines.push_back(std::move(line));
            --taking.rows;
        }
    }
    const bool same = !more && lines.size() == menu.items().size() && !lines.empty() &&
                      std::equal(lines.begin(), lines.end(), menu.items().begin(),
                                 [](const ExportedItem& line, const auto& item) { return line.id == item->tag; });
    if (same) {
        for (std::size_t i = 0; i < lines.size(); ++i) {
            write(*menu.items()[i], lines[i], taking);
        }
        return;
    }
    // Submenus stay with their lines.
    std::multimap<int, std::shared_ptr<MenuItem>> before;
    for (const auto& item : menu.items()) {
        before.emplace(item->tag, item);
    }
    menu.removeAllItems();
    for (const ExportedItem& line : lines) {
        MenuItem item;
        if (const auto known = before.find(line.id); known != before.end()) {
            item.submenu = known->second->submenu;
            before.erase(known);
        }
        write(item, line, taking);
        menu.addItem(std::move(item));
    }
    if (more) {
        menu.addItem({.title = awaited, .enabled = false, .tag = -1});
    } else if (lines.empty() && &menu != root_.get()) {
        menu.addItem({.title = asked_.contains(layout.id) ? empty : awaited, .enabled = false, .tag = -1});
    }
}

} // namespace rb
