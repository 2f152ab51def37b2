#include "desktops/linux/SaveDialog.h"

#include "desktops/linux/ProgramIcon.h"
#include "desktops/linux/Style.h"
#include "desktops/linux/TextMeter.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>
#include <QCursor>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLibraryInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QStandardPaths>
#include <QTranslator>
#include <QUrl>

#include <utility>

namespace rb {

namespace {

constexpr QSize usualSize(720, 460);

// What stands at the side: the user's usual folders, as far as they are there.
QList<QUrl> places() {
    QList<QUrl> urls;
    for (const QStandardPaths::StandardLocation place :
         {QStandardPaths::HomeLocation, QStandardPaths::DesktopLocation, QStandardPaths::DocumentsLocation,
          QStandardPaths::DownloadLocation}) {
        const QUrl url = QUrl::fromLocalFile(QStandardPaths::writableLocation(place));
        if (QFileInfo(url.toLocalFile()).isDir() && !urls.contains(url)) {
            urls << url;
        }
    }
    return urls;
}

// The nearest folder that is there.
QString existingFolder(const std::string& folder) {
    QString path = QDir::cleanPath(QString::fromStdString(folder));
    while (!QFileInfo(path).isDir() && path != QLatin1String("/") && path != QLatin1String(".")) {
        path = QFileInfo(path).path();
    }
    return path;
}

} // namespace

// Before the dialog is made, which would go back to its own words when the language changes.
void SaveDialog::useTranslations() {
    static bool done = false;
    if (std::exchange(done, true)) {
        return;
    }
    auto* translator = new QTranslator(QCoreApplication::instance());
    if (translator->load(QStringLiteral("qtbase_zh_CN"), QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(translator);
    }
}

SaveDialog::SaveDialog(const SavePanelSpec& spec, SavePanels::Validate validate, SavePanels::Answer answer)
    : QFileDialog(nullptr, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint | Qt::WindowSystemMenuHint)
    , extension_(spec.extension)
    , validate_(std::move(validate))
    , answer_(std::move(answer))
    , refusal_(new QLabel) {
    setAttribute(Qt::WA_QuitOnClose, false);
    setModal(false);
    setWindowIcon(programIcon());
    // Ours: the session's own dialog knows no refusals. Never asks about replacing, because nothing is replaced.
    setOption(QFileDialog::DontUseNativeDialog);
    setOption(QFileDialog::DontConfirmOverwrite);
    setOption(QFileDialog::HideNameFilterDetails);
    setAcceptMode(QFileDialog::AcceptSave);
    setFileMode(QFileDialog::AnyFile);
    setFilter(QDir::AllDirs | QDir::Files | QDir::Drives | QDir::NoDotAndDotDot);
    if (!extension_.empty()) {
        const QString ending = QString::fromStdString(extension_);
        setDefaultSuffix(ending);
        setNameFilter(QStringLiteral("%1 (*.%2)").arg(ending.toUpper(), ending));
    }
    setWindowTitle(QString::fromStdString(spec.title));
    setSidebarUrls(places());
    setLabelText(QFileDialog::LookIn, QStringLiteral("位置："));
    setLabelText(QFileDialog::FileName, QStringLiteral("名称："));
    setLabelText(QFileDialog::FileType, QStringLiteral("类型："));
    setLabelText(QFileDialog::Accept, QString::fromStdString(spec.prompt));
    setLabelText(QFileDialog::Reject, QStringLiteral("取消"));
    setDirectory(existingFolder(spec.directory));
    selectFile(QString::fromStdString(spec.name));

    refusal_->setTextFormat(Qt::PlainText);
    refusal_->setWordWrap(true);
    refusal_->setFont(interfaceFont({.size = 12}));
    refusal_->hide();
    if (auto* grid = qobject_cast<QGridLayout*>(layout())) {
        grid->addWidget(refusal_, grid->rowCount(), 0, 1, grid->columnCount());
    } else {
        refusal_->setParent(this);
    }
    connect(this, &QFileDialog::directoryEntered, this, [this] { say(""); });
    if (auto* name = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))) {
        connect(name, &QLineEdit::textEdited, this, [this] { say(""); });
    }
}

void SaveDialog::present() {
    resize(usualSize);
    const QScreen* screen = QApplication::screenAt(QCursor::pos());
    if (screen == nullptr) {
        screen = QApplication::primaryScreen();
    }
    if (screen != nullptr) {
        const QRect area = screen->availableGeometry();
        resize(usualSize.boundedTo(area.size() * 9 / 10));
        move(area.center() - rect().center());
    }
    show();
    raise();
    if (auto* name = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))) {
        name->setFocus();
        const auto stem = name->text().size() - static_cast<qsizetype>(extension_.size()) - 1;
        name->setSelection(0, static_cast<int>(stem > 0 ? stem : name->text().size()));
    }
}

void SaveDialog::dismiss() {
    answer_ = nullptr;
    hide();
    if (answering_) {
        deleteLater(); // it stands in its own event
    } else {
        delete this;
    }
}

std::string SaveDialog::refusal() const {
    return refusal_->text().toStdString();
}

void SaveDialog::accept() {
    const auto* name = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    const QString typed = name != nullptr ? name->text().trimmed() : QString();
    if (typed.isEmpty()) {
        return;
    }
    // Typing the name of a folder goes there.
    const QString literal = QDir::cleanPath(directory().absoluteFilePath(typed));
    if (QFileInfo(literal).isDir()) {
        setDirectory(literal);
        return;
    }
    QString path = literal;
    const QString ending = QLatin1Char('.') + QString::fromStdString(extension_);
    if (!extension_.empty() && !path.endsWith(ending, Qt::CaseInsensitive)) {
        path += ending;
    }
    const std::string chosen = path.toStdString();
    const auto refusal = validate_ ? validate_(chosen) : std::nullopt;
    if (refusal) {
        if (name->completer() != nullptr) {
            name->completer()->popup()->hide(); // it would cover what is said
        }
        say(*refusal);
        return;
    }
    finish(chosen);
}

void SaveDialog::reject() {
    finish(std::nullopt);
}

void SaveDialog::finish(const std::optional<std::string>& path) {
    // Only once: Escape and a click may both be on their way.
    if (const auto answer = std::exchange(answer_, nullptr)) {
        hide();
        answering_ = true;
        answer(path);
    }
}

void SaveDialog::say(const std::string& refusal) {
    refusal_->setText(QString::fromStdString(refusal));
    refusal_->setVisible(!refusal.empty());
    if (const auto* style = dynamic_cast<const LinuxStyle*>(QApplication::style())) {
        QPalette palette = refusal_->palette();
        palette.setColor(QPalette::WindowText, style->theme().destructive);
        refusal_->setPalette(palette);
    }
}

} // namespace rb
