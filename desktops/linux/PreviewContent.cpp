#include "desktops/linux/PreviewContent.h"

#include "desktops/linux/Bitmap.h"
#include "desktops/linux/FolderSize.h"
#include "platform/Handle.h"
#include "platform/Thumbnails.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QLabel>
#include <QLocale>
#include <QMimeDatabase>
#include <QPainter>
#include <QPlainTextEdit>
#include <QStringDecoder>
#include <QVBoxLayout>

namespace rb {

namespace {

constexpr int largestPicture = 2400; // pixels on the longer side
constexpr qint64 mostText = 1 << 20; // bytes
constexpr int documentSide = 720;    // points
constexpr int iconSide = 128;
constexpr int nameSize = 16; // pixels

// A picture scaled down to fit, centred.
class PictureView final : public QWidget {
public:
    void setPicture(std::shared_ptr<const LinuxBitmap> picture) {
        picture_ = std::move(picture);
        updateGeometry();
        update();
    }
    QSize sizeHint() const override {
        return picture_ ? picture_->image().size().expandedTo({360, 240}) : QSize(360, 240);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        if (!picture_) {
            return;
        }
        const double ratio = devicePixelRatioF();
        const QSize shown = picture_->image().size().scaled(
            (QSizeF(size()) * ratio).toSize().boundedTo(picture_->image().size()), Qt::KeepAspectRatio);
        QRectF target({0, 0}, QSizeF(shown) / ratio);
        target.moveCenter(QRectF(rect()).center());
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(target, picture_->halvedTo(shown));
    }

private:
    std::shared_ptr<const LinuxBitmap> picture_;
};

// The text, or nothing for what isn't one.
std::optional<QString> textOf(const QString& path) {
    const QMimeType type = QMimeDatabase().mimeTypeForFile(path);
    QFile file(path);
    if (!type.inherits(QStringLiteral("text/plain")) || !file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QByteArray bytes = file.read(mostText);
    QStringDecoder decoder(QStringDecoder::encodingForData(bytes).value_or(QStringConverter::Utf8));
    QString text = decoder(bytes);
    if (file.size() > mostText) {
        text += QStringLiteral("\n…");
    }
    return text;
}

QString kindAndDate(const QFileInfo& info) {
    const QString kind = info.isDir() ? QStringLiteral("文件夹") : QMimeDatabase().mimeTypeForFile(info).comment();
    return kind + QStringLiteral("\n修改时间：") +
           QLocale(QLocale::Chinese).toString(info.lastModified(), QLocale::ShortFormat);
}

QString sizeText(qint64 bytes) {
    return QLocale(QLocale::Chinese).formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
}

// Icon, name and facts. A rendering takes the whole place when one arrives.
class FactsView final : public QWidget {
public:
    FactsView(const QString& path, const PreviewContext& context)
        : layout_(new QVBoxLayout(this)) {
        const QFileInfo info(path);
        layout_->setContentsMargins(32, 28, 32, 28);
        layout_->addStretch();
        auto* icon = new QLabel(this);
        const Image image = context.thumbnails.iconForFile(path.toStdString());
        if (const auto* bitmap = std::get_if<std::shared_ptr<const Bitmap>>(&image)) {
            icon->setPixmap(QPixmap::fromImage(dynamic_cast<const LinuxBitmap&>(**bitmap).image())
                                .scaled(iconSide, iconSide, Qt::KeepAspectRatio, Qt::SmoothTransformation));
        }
        icon->setAlignment(Qt::AlignCenter);
        layout_->addWidget(icon);
        auto* name = addLabel(info.fileName());
        QFont font = name->font();
        font.setBold(true);
        font.setPixelSize(nameSize);
        name->setFont(font);
        facts_ = addLabel({});
        layout_->addStretch();
        if (!info.exists()) {
            facts_->setText(QStringLiteral("文件已经不在了"));
        } else if (info.isDir()) {
            facts_->setText(QStringLiteral("正在计算…\n") + kindAndDate(info));
            counting_ = measureFolder(context.loop, path, [this, info](const FolderSize& size) {
                facts_->setText(QStringLiteral("%1%2 项，共 %3\n")
                                    .arg(size.complete ? QString() : QStringLiteral("超过 "),
                                         QString::number(size.items), sizeText(size.bytes)) +
                                kindAndDate(info));
            });
        } else {
            facts_->setText(sizeText(info.size()) + QLatin1Char('\n') + kindAndDate(info));
            rendering_ = context.thumbnails.requestDocumentThumbnail(
                path.toStdString(), {documentSide, documentSide}, 1,
                [this](std::shared_ptr<const Bitmap> picture) { showRendering(std::move(picture)); });
        }
    }
    QSize sizeHint() const override { return {560, 420}; }

private:
    QLabel* addLabel(const QString& text) {
        auto* label = new QLabel(text, this);
        label->setAlignment(Qt::AlignCenter);
        label->setWordWrap(true);
        label->setTextFormat(Qt::PlainText); // names are the file's, not ours
        layout_->addWidget(label);
        return label;
    }
    void showRendering(std::shared_ptr<const Bitmap> picture) {
        auto bitmap = std::dynamic_pointer_cast<const LinuxBitmap>(std::move(picture));
        if (!bitmap) {
            return;
        }
        for (QLabel* label : findChildren<QLabel*>()) {
            label->hide();
        }
        auto* view = new PictureView;
        view->setPicture(std::move(bitmap));
        layout_->setContentsMargins(12, 12, 12, 12);
        layout_->insertWidget(1, view, 1);
    }

    QVBoxLayout* layout_;
    QLabel* facts_ = nullptr;
    Handle counting_;
    Handle rendering_;
};

} // namespace

QWidget* makePreview(const QString& path, const PreviewContext& context) {
    const QFileInfo info(path);
    if (info.isFile() && QMimeDatabase().mimeTypeForFile(info).name().startsWith(QLatin1String("image/"))) {
        auto picture = std::dynamic_pointer_cast<const LinuxBitmap>(
            context.thumbnails.imageThumb(path.toStdString(), largestPicture));
        if (picture) {
            auto* view = new PictureView;
            view->setPicture(std::move(picture));
            return view;
        }
    }
    if (info.isFile()) {
        if (const auto text = textOf(path)) {
            auto* view = new QPlainTextEdit(*text);
            view->setReadOnly(true);
            view->setFrameShape(QFrame::NoFrame);
            view->document()->setDocumentMargin(16);
            view->resize(680, 520);
            view->setMinimumSize(360, 240);
            return view;
        }
    }
    return new FactsView(path, context);
}

} // namespace rb
