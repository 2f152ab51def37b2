#include "helpers/update/UpdateWindow.h"

#include "desktops/linux/ProgramIcon.h"
#include "desktops/linux/Style.h"
#include "desktops/linux/TextMeter.h"

#include <QApplication>
#include <QCursor>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QTextDocumentFragment>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace rb {

namespace {

constexpr int margin = 22;
constexpr int iconSize = 56;
constexpr int textWidth = 380;
constexpr int notesHeight = 170;
constexpr int gap = 18;
constexpr int buttonGap = 10;
constexpr int progressSteps = 1000;
constexpr double megabyte = 1000.0 * 1000.0;

QLabel* textLabel(const Font& font, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setFont(interfaceFont(font));
    label->setFixedWidth(textWidth);
    return label;
}

struct ProblemTexts {
    const char* heading;
    const char* text;
};

ProblemTexts textsOf(UpdateProblem problem) {
    switch (problem) {
    case UpdateProblem::Feed:
        return {"无法检查更新", "没有从更新服务器得到可用的回答。请检查网络连接，稍后再试。"};
    case UpdateProblem::Download:
        return {"无法下载更新", "更新没有完整下载。请检查网络连接，稍后再试。"};
    case UpdateProblem::Storage:
        return {"无法保存更新", "下载的更新不能保存到磁盘上。请检查磁盘空间和缓存文件夹的权限。"};
    case UpdateProblem::Verification:
        return {"更新没有通过验证", "下载的内容不能证明来自 Rook Bay，已经丢弃。现在的版本可以继续使用。"};
    case UpdateProblem::Installer:
        break;
    }
    return {"无法打开安装程序", "更新已下载并通过验证，但系统没有能打开它的安装程序。您可以自行安装这个文件："};
}

} // namespace

QString plainNotes(const std::string& notes) {
    const QString text = QString::fromStdString(notes);
    QString plain = Qt::mightBeRichText(text) ? QTextDocumentFragment::fromHtml(text).toPlainText() : text;
    return plain.remove(QChar(QChar::ObjectReplacementCharacter)).trimmed();
}

QString shownSize(std::uint64_t bytes) {
    return QStringLiteral("%1 MB").arg(static_cast<double>(bytes) / megabyte, 0, 'f', 1);
}

UpdateWindow::UpdateWindow(Acts acts)
    : QDialog(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint)
    , acts_(std::move(acts))
    , heading_(textLabel({.size = 14, .weight = FontWeight::Bold}, this))
    , text_(textLabel({.size = 13}, this))
    , notes_(new QPlainTextEdit(this))
    , progress_(new QProgressBar(this))
    , button_(new QPushButton(this))
    , cancel_(new QPushButton(this)) {
    setWindowTitle(QStringLiteral("Rook Bay 更新"));
    setWindowIcon(programIcon());

    auto* page = new QVBoxLayout(this);
    page->setSizeConstraint(QLayout::SetFixedSize);
    page->setContentsMargins(margin, margin, margin, margin - LinuxStyle::focusRingWidth);
    page->setSpacing(gap);
    auto* top = new QHBoxLayout;
    top->setSpacing(gap);
    page->addLayout(top);
    auto* icon = new QLabel(this);
    icon->setPixmap(programIcon().pixmap(QSize(iconSize, iconSize), devicePixelRatioF()));
    icon->setFixedSize(iconSize, iconSize);
    top->addWidget(icon, 0, Qt::AlignTop);
    auto* column = new QVBoxLayout;
    column->setSpacing(8);
    top->addLayout(column, 1);
    column->addWidget(heading_);
    column->addWidget(text_);
    notes_->setReadOnly(true);
    notes_->setFixedSize(textWidth, notesHeight);
    notes_->setFont(interfaceFont({.size = 12}));
    notes_->setAccessibleName(QStringLiteral("更新说明"));
    column->addWidget(notes_);
    progress_->setFixedWidth(textWidth);
    progress_->setTextVisible(false);
    progress_->setAccessibleName(QStringLiteral("下载进度"));
    column->addWidget(progress_);
    column->addStretch(1);

    auto* row = new QHBoxLayout;
    row->setSpacing(buttonGap - 2 * LinuxStyle::focusRingWidth);
    row->setContentsMargins(0, 0, -LinuxStyle::focusRingWidth, 0);
    page->addLayout(row);
    row->addStretch(1);
    row->addWidget(cancel_);
    row->addWidget(button_);
    for (QPushButton* button : {button_, cancel_}) {
        button->setAutoDefault(false);
    }
    connect(button_, &QPushButton::clicked, this, [this] {
        if (const auto act = act_) {
            act();
        }
    });
    connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
}

void UpdateWindow::present() {
    fit();
    const QScreen* screen = QApplication::screenAt(QCursor::pos());
    if (screen == nullptr) {
        screen = QApplication::primaryScreen();
    }
    if (screen != nullptr) {
        const QRect area = screen->availableGeometry();
        const QSize size = sizeHint();
        move(area.left() + (area.width() - size.width()) / 2, area.top() + (area.height() - size.height()) * 2 / 5);
    }
    QDialog::show();
    raise();
    activateWindow();
}

void UpdateWindow::show(const Page& page) {
    heading_->setText(page.heading);
    setAccessibleName(page.heading);
    text_->setText(page.text);
    text_->setVisible(!page.text.isEmpty());
    notes_->setPlainText(page.notes);
    notes_->setVisible(!page.notes.isEmpty());
    progress_->setVisible(page.progress);
    button_->setText(page.button);
    button_->setVisible(!page.button.isEmpty());
    button_->setDefault(!page.button.isEmpty());
    cancel_->setText(page.cancel);
    cancel_->setVisible(!page.cancel.isEmpty());
    act_ = page.act;
    (page.button.isEmpty() ? cancel_ : button_)->setFocus();
    fit();
}

void UpdateWindow::fit() {
    // Wrapped texts know their height only for a width.
    for (QLabel* label : {heading_, text_}) {
        label->setFixedHeight(std::max(label->heightForWidth(textWidth), 0));
    }
    adjustSize();
}

void UpdateWindow::showChecking() {
    progress_->setRange(0, 0);
    show({.heading = QStringLiteral("正在检查更新…"), .progress = true, .cancel = QStringLiteral("取消")});
}

void UpdateWindow::showUpToDate(const std::string& version) {
    show({.heading = QStringLiteral("已是最新版本"),
          .text = QStringLiteral("Rook Bay %1 是目前最新的版本。").arg(QString::fromStdString(version)),
          .button = QStringLiteral("好"),
          .act = [this] { reject(); }});
}

void UpdateWindow::showOffer(const UpdateOffer& offer) {
    QString text = QStringLiteral("Rook Bay %1 已经发布，您现在使用的是 %2。")
                       .arg(QString::fromStdString(offer.version).left(40), QString::fromStdString(offer.currentVersion));
    if (offer.length) {
        text += QStringLiteral("下载大小为 %1。").arg(shownSize(*offer.length));
    }
    show({.heading = QStringLiteral("有新版本可用"),
          .text = text,
          .notes = plainNotes(offer.notes),
          .button = QStringLiteral("下载并安装"),
          .cancel = QStringLiteral("以后再说"),
          .act = acts_.install});
}

void UpdateWindow::showDownload(std::uint64_t received, std::uint64_t whole) {
    const QString heading = QStringLiteral("正在下载更新…");
    if (heading_->text() != heading) {
        show({.heading = heading, .text = QStringLiteral(" "), .progress = true, .cancel = QStringLiteral("取消")});
    }
    if (whole == 0) {
        progress_->setRange(0, 0);
        text_->setText(QStringLiteral("已下载 %1").arg(shownSize(received)));
        return;
    }
    progress_->setRange(0, progressSteps);
    progress_->setValue(static_cast<int>(static_cast<double>(received) / static_cast<double>(whole) * progressSteps));
    text_->setText(QStringLiteral("已下载 %1，共 %2").arg(shownSize(received), shownSize(whole)));
}

void UpdateWindow::showVerifying() {
    progress_->setRange(0, 0);
    show({.heading = QStringLiteral("正在验证更新…"), .progress = true, .cancel = QStringLiteral("取消")});
}

void UpdateWindow::showHandedOver() {
    show({.heading = QStringLiteral("更新已准备好"),
          .text = QStringLiteral("安装包通过了验证，并已交给系统的软件安装程序。装好后退出并重新启动 Rook Bay，即可使用新版本。"),
          .button = QStringLiteral("好"),
          .act = [this] { reject(); }});
}

void UpdateWindow::showProblem(UpdateProblem problem, const std::string& detail) {
    const ProblemTexts texts = textsOf(problem);
    QString text = QString::fromUtf8(texts.text);
    if (problem == UpdateProblem::Installer) {
        text += QLatin1Char('\n') + QString::fromStdString(detail);
    }
    text_->setTextInteractionFlags(problem == UpdateProblem::Installer ? Qt::TextSelectableByMouse
                                                                       : Qt::NoTextInteraction);
    show({.heading = QString::fromUtf8(texts.heading),
          .text = text,
          .button = QStringLiteral("好"),
          .act = [this] { reject(); }});
}

void UpdateWindow::reject() {
    hide();
    if (const auto closed = std::exchange(acts_.closed, nullptr)) {
        closed();
    }
}

} // namespace rb
