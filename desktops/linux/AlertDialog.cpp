#include "desktops/linux/AlertDialog.h"

#include "desktops/linux/ProgramIcon.h"
#include "desktops/linux/Style.h"
#include "desktops/linux/TextMeter.h"

#include <QApplication>
#include <QCloseEvent>
#include <QCursor>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace rb {

namespace {

constexpr const char* okTitle = "好";
constexpr int margin = 22;
constexpr int iconSize = 56;
constexpr int textWidth = 320;
constexpr int gap = 18;
constexpr int buttonGap = 10;

QLabel* textLabel(const std::string& text, const Font& font, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setFont(interfaceFont(font));
    label->setText(QString::fromStdString(text));
    label->setFixedWidth(textWidth);
    return label;
}

QString titleOf(const AlertButton& button) {
    return QString::fromStdString(button.title).replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace

AlertDialog::AlertDialog(const Alert& alert, std::function<void(std::size_t)> answer)
    : QDialog(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint)
    , answer_(std::move(answer)) {
    setWindowModality(Qt::ApplicationModal);
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(QStringLiteral("Rook Bay"));
    setWindowIcon(programIcon());
    setAccessibleName(QString::fromStdString(alert.messageText));

    auto* page = new QVBoxLayout(this);
    page->setSizeConstraint(QLayout::SetFixedSize);
    page->setContentsMargins(margin, margin, margin, margin - LinuxStyle::focusRingWidth);
    page->setSpacing(gap);
    auto* top = new QHBoxLayout;
    top->setSpacing(gap);
    page->addLayout(top);
    const QIcon programIcon = QApplication::windowIcon();
    if (!programIcon.isNull()) {
        auto* icon = new QLabel(this);
        icon->setPixmap(programIcon.pixmap(QSize(iconSize, iconSize), devicePixelRatio()));
        icon->setFixedSize(iconSize, iconSize);
        top->addWidget(icon, 0, Qt::AlignTop);
    }
    auto* texts = new QVBoxLayout;
    texts->setSpacing(6);
    top->addLayout(texts, 1);
    texts->addWidget(textLabel(alert.messageText, {.size = 14, .weight = FontWeight::Bold}, this));
    if (!alert.informativeText.empty()) {
        QLabel* label = textLabel(alert.informativeText, {.size = 13}, this);
        label->setForegroundRole(QPalette::WindowText);
        texts->addWidget(label);
    }
    texts->addStretch(1);

    std::vector<AlertButton> shown = alert.buttons;
    if (shown.empty()) {
        shown.push_back({.title = okTitle});
    }
    auto* row = new QHBoxLayout;
    row->setSpacing(buttonGap - 2 * LinuxStyle::focusRingWidth);
    row->setContentsMargins(0, 0, -LinuxStyle::focusRingWidth, 0);
    page->addLayout(row);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        auto* button = new QPushButton(titleOf(shown[i]), this);
        button->setAutoDefault(false);
        if (shown[i].destructive) {
            button->setProperty(LinuxStyle::destructiveProperty, true);
        }
        connect(button, &QPushButton::clicked, this, [this, i] { choose(i); });
        buttons_.push_back(button);
    }
    buttons_.front()->setDefault(true);
    // The first, the default one, stands rightmost.
    row->addStretch(1);
    for (auto button = buttons_.rbegin(); button != buttons_.rend(); ++button) {
        row->addWidget(*button);
    }
    buttons_.front()->setFocus();
}

void AlertDialog::present() {
    adjustSize();
    const QScreen* screen = QApplication::screenAt(QCursor::pos());
    if (!screen) {
        screen = QApplication::primaryScreen();
    }
    if (screen) {
        const QRect area = screen->availableGeometry();
        const QSize size = sizeHint();
        // A little above the middle, where the eye looks first.
        move(area.left() + (area.width() - size.width()) / 2, area.top() + (area.height() - size.height()) * 2 / 5);
    }
    show();
    raise();
}

void AlertDialog::presentOn(QWidget& window) {
    adjustSize();
    setWindowModality(Qt::WindowModal);
    // With the flags that it has: a new parent would give it others.
    setParent(&window, windowFlags());
    setPalette(QApplication::palette());
    const QRect area = window.frameGeometry();
    const QSize size = sizeHint();
    move(area.left() + (area.width() - size.width()) / 2, area.top() + (area.height() - size.height()) / 3);
    stayOnScreen();
    // A question about a mode comes with the screen still changing.
    for (const QScreen* screen : QGuiApplication::screens()) {
        connect(screen, &QScreen::geometryChanged, this, &AlertDialog::stayOnScreen);
    }
    show();
    raise();
}

void AlertDialog::stayOnScreen() {
    const QRect dialog(pos(), sizeHint());
    const QScreen* under = QGuiApplication::screenAt(dialog.center());
    const QRect area = (under ? under : QGuiApplication::primaryScreen())->availableGeometry();
    const auto within = [](int place, int size, int from, int extent) {
        return std::max(std::min(place, from + extent - size), from);
    };
    move(within(dialog.x(), dialog.width(), area.x(), area.width()),
         within(dialog.y(), dialog.height(), area.y(), area.height()));
}

void AlertDialog::closeEvent(QCloseEvent* event) {
    event->ignore();
    reject();
}

void AlertDialog::choose(std::size_t button) {
    // Only once: Escape and a click may both be on their way.
    if (const auto answer = std::exchange(answer_, nullptr)) {
        answer(button);
    }
}

} // namespace rb
