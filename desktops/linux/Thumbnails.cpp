#include "desktops/linux/Thumbnails.h"

#include "desktops/linux/Bitmap.h"
#include "desktops/linux/Folders.h"
#include "desktops/linux/ThemeIcons.h"

#include <QBrush>
#include <QBuffer>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QImageReader>
#include <QMimeDatabase>
#include <QPainter>
#include <QPainterPath>
#include <QProcess>
#include <QSaveFile>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryFile>
#include <QTimer>
#include <QTransform>
#include <QUrl>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <sys/resource.h>
#include <utility>

namespace rb {

namespace {

constexpr int iconPixels = 128;
constexpr qint64 mostPixels = 50'000'000;   // about half a second of decoding
constexpr int thumbnailerTimeLimit = 15000; // milliseconds; a stuck thumbnailer must not stay

QDir thumbnailFolder(const QString& size) {
    return {QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + QStringLiteral("/thumbnails/") +
            size};
}

// The name of a file's thumbnail in the shared cache.
QString thumbnailName(const QString& path) {
    const QByteArray uri = QUrl::fromLocalFile(path).toEncoded(QUrl::FullyEncoded);
    return QString::fromLatin1(QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex()) + QStringLiteral(".png");
}

QString modificationTime(const QString& path) {
    return QString::number(QFileInfo(path).lastModified().toSecsSinceEpoch());
}

// The folders of the shared cache and the longest side of the pictures in them, from small to large.
struct CacheFolder {
    const char* name;
    int pixels;
};
constexpr std::array<CacheFolder, 4> cacheFolders{
    {{"normal", 128}, {"large", 256}, {"x-large", 512}, {"xx-large", 1024}}};

// Where pictures that large are kept; nothing is kept larger than in the last.
CacheFolder cacheFolderFor(int pixels) {
    const auto* const found = std::find_if(cacheFolders.begin(), cacheFolders.end() - 1,
                                           [pixels](const CacheFolder& folder) { return folder.pixels >= pixels; });
    return *found;
}

// A picture of the shared cache that was made of the file as it is now, at least that large; null for none.
QImage cachedThumbnail(const QString& path, int pixels) {
    for (const CacheFolder& folder : cacheFolders) {
        if (folder.pixels < cacheFolderFor(pixels).pixels) {
            continue;
        }
        // The reader's own texts end at the first colon, and the key has two.
        QImage cached(thumbnailFolder(QString::fromLatin1(folder.name)).filePath(thumbnailName(path)), "png");
        if (cached.text(QStringLiteral("Thumb::MTime")) == modificationTime(path)) {
            return cached;
        }
    }
    return {};
}

// Keeps a new rendering for every program: private, written whole.
void shareThumbnail(const QString& path, QImage picture, int pixels) {
    const CacheFolder kept = cacheFolderFor(pixels);
    const QDir folder = thumbnailFolder(QString::fromLatin1(kept.name));
    if (makePrivateFolder(folder.path().toStdString())) {
        return;
    }
    if (std::max(picture.width(), picture.height()) > kept.pixels) {
        picture = picture.scaled(kept.pixels, kept.pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    picture.setText(QStringLiteral("Thumb::URI"),
                    QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded(QUrl::FullyEncoded)));
    picture.setText(QStringLiteral("Thumb::MTime"), modificationTime(path));
    QSaveFile file(folder.filePath(thumbnailName(path)));
    if (file.open(QIODevice::WriteOnly)) {
        file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        if (picture.save(&file, "png")) {
            file.commit();
        }
    }
}

// A word of the template with what stands for its signs, which may hold such signs themselves.
QString filledIn(const QString& word, const std::map<QChar, QString>& values) {
    QString text;
    for (qsizetype at = 0; at < word.size(); ++at) {
        const auto value =
            word[at] == QLatin1Char('%') && at + 1 < word.size() ? values.find(word[at + 1]) : values.end();
        if (value == values.end()) {
            text += word[at];
        } else {
            text += value->second;
            ++at;
        }
    }
    return text;
}

// The command line template of the program that renders this kind of file.
std::optional<QString> thumbnailerFor(const QString& path) {
    const QMimeType type = QMimeDatabase().mimeTypeForFile(path);
    for (const QString& data : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
        const QDir folder(data + QStringLiteral("/thumbnailers"));
        for (const QString& name : folder.entryList({QStringLiteral("*.thumbnailer")}, QDir::Files)) {
            QSettings entry(folder.filePath(name), QSettings::IniFormat);
            entry.beginGroup(QStringLiteral("Thumbnailer Entry"));
            const QStringList types =
                entry.value(QStringLiteral("MimeType")).toString().split(QLatin1Char(';'), Qt::SkipEmptyParts);
            const QString program = entry.value(QStringLiteral("TryExec")).toString();
            const bool installed = program.isEmpty() || !QStandardPaths::findExecutable(program).isEmpty();
            if (types.contains(type.name()) && installed) {
                return entry.value(QStringLiteral("Exec")).toString();
            }
        }
    }
    return std::nullopt;
}

// For the screens that show two pixels a point; others take half of it.
constexpr int menuScale = 2;

QImage plainFolder() {
    QImage image(iconPixels, iconPixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath back;
    back.setFillRule(Qt::WindingFill);
    back.addRoundedRect(10, 24, 54, 40, 9, 9);
    back.addRoundedRect(10, 34, 108, 60, 10, 10);
    painter.fillPath(back, QColor(0x55, 0x9B, 0xDA));
    QPainterPath front;
    front.addRoundedRect(10, 46, 108, 62, 10, 10);
    QLinearGradient shade(0, 46, 0, 108);
    shade.setColorAt(0, QColor(0x8A, 0xC7, 0xF6));
    shade.setColorAt(1, QColor(0x6F, 0xB2, 0xEA));
    painter.fillPath(front, shade);
    return image;
}

// A sheet of paper with the file's kind on it.
QImage plainDocument(const QString& suffix) {
    QImage image(iconPixels, iconPixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    constexpr double corner = 26;
    QPainterPath outline;
    outline.moveTo(24, 8);
    outline.lineTo(104 - corner, 8);
    outline.lineTo(104, 8 + corner);
    outline.lineTo(104, 120);
    outline.lineTo(24, 120);
    outline.closeSubpath();
    painter.fillPath(outline, QColor(0xFA, 0xFA, 0xFA));
    QPainterPath fold;
    fold.moveTo(104 - corner, 8);
    fold.lineTo(104 - corner, 8 + corner);
    fold.lineTo(104, 8 + corner);
    fold.closeSubpath();
    painter.fillPath(fold, QColor(0xD5, 0xD8, 0xDC));
    painter.setPen(QPen(QColor(0, 0, 0, 60), 1.5));
    painter.drawPath(outline);
    constexpr int longestSuffix = 4;
    if (!suffix.isEmpty() && suffix.size() <= longestSuffix) {
        QFont font = painter.font();
        font.setPixelSize(22);
        font.setBold(true);
        painter.setFont(font);
        painter.setPen(QColor(0x8A, 0x92, 0x9C));
        painter.drawText(QRectF(24, 80, 80, 32), Qt::AlignCenter, suffix.toUpper());
    }
    return image;
}

} // namespace

struct LinuxThumbnails::Request {
    Request() = default;
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;
    ~Request() {
        if (process) {
            process->disconnect(); // ending it here is nobody's news
            process->kill();
            process->waitForFinished();
        }
    }

    QString path;
    int pixels = 0;
    Answer answer;
    std::unique_ptr<QProcess> process;
    std::unique_ptr<QTemporaryFile> output;
    QTimer limit;
};

LinuxThumbnails::LinuxThumbnails() = default;

LinuxThumbnails::~LinuxThumbnails() = default;

std::shared_ptr<const Bitmap> LinuxThumbnails::imageThumb(const std::string& path, int maxPixelSize) {
    QImageReader reader(QString::fromStdString(path));
    reader.setAutoTransform(true);
    // Files with a wrong ending are pictures all the same.
    reader.setDecideFormatFromContent(true);
    const QSize size = reader.size();
    // Only JPEG is decoded small at once. Of anything else that large the thumbnailers, which run beside us, may try.
    if (reader.format() != "jpeg" && qint64{size.width()} * size.height() > mostPixels) {
        return nullptr;
    }
    if (size.isValid() && std::max(size.width(), size.height()) > maxPixelSize) {
        reader.setScaledSize(size.scaled(maxPixelSize, maxPixelSize, Qt::KeepAspectRatio).expandedTo({1, 1}));
    }
    QImage image = reader.read();
    if (image.isNull()) {
        return nullptr;
    }
    if (std::max(image.width(), image.height()) > maxPixelSize) {
        image = image.scaled(maxPixelSize, maxPixelSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    return std::make_shared<LinuxBitmap>(image.convertToFormat(QImage::Format_ARGB32_Premultiplied));
}

// One picture for all files of a kind: what was made of it once (shadows, halvings) serves all of them.
Image LinuxThumbnails::iconOf(const std::string& path, int pixels, Size points) {
    constexpr std::size_t mostIcons = 64;
    const QFileInfo info(QString::fromStdString(path));
    const QMimeType type = QMimeDatabase().mimeTypeForFile(info);
    const QStringList kind{QIcon::themeName(),      type.iconName(),
                           type.genericIconName(),  info.isDir() ? QStringLiteral("/") : info.suffix(),
                           QString::number(pixels), QString::number(points.width)};
    if (const auto known = icons_.find(kind); known != icons_.end()) {
        return known->second;
    }
    QImage image = iconFromTheme(type.iconName(), type.genericIconName()).pixmap(QSize(pixels, pixels), 1.0).toImage();
    if (image.isNull()) {
        image = info.isDir() ? plainFolder() : plainDocument(info.suffix());
    }
    if (points.width > 0) {
        image = image.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    auto icon = points.width > 0 ? std::make_shared<LinuxBitmap>(image, points) : std::make_shared<LinuxBitmap>(image);
    if (icons_.size() >= mostIcons) {
        icons_.clear();
    }
    icons_.emplace(kind, icon);
    return icon;
}

Image LinuxThumbnails::iconForFile(const std::string& path) {
    return iconOf(path, iconPixels, {});
}

Image LinuxThumbnails::iconForFile(const std::string& path, double side) {
    return iconOf(path, static_cast<int>(side * menuScale), {side, side});
}

bool LinuxThumbnails::canDecode(const std::string& path) {
    QImageReader reader(QString::fromStdString(path));
    reader.setDecideFormatFromContent(true);
    if (!reader.canRead()) {
        return false;
    }
    // Of other kinds so large a picture has no thumbnail either, and some don't tell their size without being decoded.
    const QSize size = reader.format() == "jpeg" ? reader.size() : QSize();
    return qint64{size.width()} * size.height() <= mostPixels;
}

namespace {

// As Qt counts: the compression that takes a fifth of the usual one's time, for a file a little larger.
constexpr int quickPng = 88;

// Takes nothing more once nobody wants it, which ends the encoding.
class UnlessGivenUp final : public QBuffer {
public:
    UnlessGivenUp(QByteArray& bytes, const std::atomic<bool>& givenUp)
        : QBuffer(&bytes)
        , givenUp_(givenUp) {}

protected:
    qint64 writeData(const char* data, qint64 size) override { return givenUp_ ? -1 : QBuffer::writeData(data, size); }

private:
    const std::atomic<bool>& givenUp_;
};

} // namespace

SharedBytes LinuxThumbnails::pngData(const SharedBytes& data, const std::atomic<bool>& givenUp) {
    QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data->data()), static_cast<qsizetype>(data->size()));
    QBuffer source(&bytes);
    QImageReader reader(&source);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    const QImage picture = givenUp || qint64{size.width()} * size.height() > mostPixels ? QImage() : reader.read();
    QByteArray png;
    UnlessGivenUp target(png, givenUp);
    if (givenUp || picture.isNull() || !target.open(QIODevice::WriteOnly) || !picture.save(&target, "PNG", quickPng)) {
        return nullptr;
    }
    return std::make_shared<const Bytes>(png.begin(), png.end());
}

DecodedPicture LinuxThumbnails::squareThumb(const SharedBytes& data, double side, double cornerRadius) {
    QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data->data()), static_cast<qsizetype>(data->size()));
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    const QSize size = reader.size();
    if (qint64{size.width()} * size.height() > mostPixels) {
        return {.pixelSize = {static_cast<double>(size.width()), static_cast<double>(size.height())}};
    }
    const int pixels = static_cast<int>(side * menuScale);
    if (size.isValid()) {
        reader.setScaledSize(size.scaled(pixels, pixels, Qt::KeepAspectRatioByExpanding).expandedTo({1, 1}));
    }
    QImage picture = reader.read();
    if (picture.isNull()) {
        return {};
    }
    const QSize whole = size.isValid() ? size : picture.size();
    picture = picture.scaled(pixels, pixels, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    QImage square(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    square.fill(Qt::transparent);
    QPainter painter(&square);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath outline;
    outline.addRoundedRect(0, 0, pixels, pixels, cornerRadius * menuScale, cornerRadius * menuScale);
    painter.setPen(Qt::NoPen);
    // A brush, because a clipped picture would have jagged corners.
    QBrush brush(picture);
    brush.setTransform(QTransform::fromTranslate((pixels - picture.width()) / 2.0, (pixels - picture.height()) / 2.0));
    painter.setBrush(brush);
    painter.drawPath(outline);
    painter.end();
    return {.pixelSize = {static_cast<double>(whole.width()), static_cast<double>(whole.height())},
            .thumbnail = std::make_shared<LinuxBitmap>(square, Size{side, side})};
}

Handle LinuxThumbnails::requestDocumentThumbnail(const std::string& path, Size size, double scale, Answer answer) {
    const unsigned long number = next_++;
    auto request = std::make_unique<Request>();
    request->path = QString::fromStdString(path);
    request->pixels = static_cast<int>(std::max(size.width, size.height) * scale);
    request->answer = std::move(answer);
    // The look into the cache and the search for a program wait for a later turn: hanging a card comes first.
    QObject::connect(&request->limit, &QTimer::timeout, &receiver_, [this, number] {
        const Request& waiting = *requests_.at(number);
        if (waiting.process) {
            requests_.erase(number); // took too long
            return;
        }
        if (const QImage cached = cachedThumbnail(waiting.path, waiting.pixels); !cached.isNull()) {
            answerWith(number, cached);
        } else {
            runThumbnailer(number, waiting.path, waiting.pixels);
        }
    });
    request->limit.setSingleShot(true);
    request->limit.start(0);
    requests_.emplace(number, std::move(request));
    return Handle(lifetime_.guard([this, number] { requests_.erase(number); }));
}

void LinuxThumbnails::runThumbnailer(unsigned long number, const QString& path, int pixels) {
    const auto command = thumbnailerFor(path);
    Request& request = *requests_.at(number);
    request.output = std::make_unique<QTemporaryFile>();
    if (!command || !request.output->open()) {
        requests_.erase(number);
        return;
    }
    QStringList words = QProcess::splitCommand(*command);
    const std::map<QChar, QString> values{
        {QLatin1Char('i'), path},
        {QLatin1Char('u'), QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded())},
        {QLatin1Char('o'), request.output->fileName()},
        {QLatin1Char('s'), QString::number(std::max(pixels, cacheFolderFor(pixels).pixels))},
        {QLatin1Char('%'), QStringLiteral("%")}};
    for (QString& word : words) {
        word = filledIn(word, values);
    }
    if (words.isEmpty()) {
        requests_.erase(number);
        return;
    }
    request.process = std::make_unique<QProcess>();
    QProcess& process = *request.process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    // A picture that is a bomb, or a program that is, must not take the machine with it.
    process.setChildProcessModifier([] {
        constexpr rlim_t memory = rlim_t{2} << 30U;
        constexpr rlim_t seconds = thumbnailerTimeLimit / 1000;
        const rlimit memoryLimit{memory, memory};
        const rlimit timeLimit{seconds, seconds};
        setrlimit(RLIMIT_AS, &memoryLimit);
        setrlimit(RLIMIT_CPU, &timeLimit);
        setpriority(PRIO_PROCESS, 0, 10);
    });
    // A turn later, since the process is in the middle of telling us.
    const auto done = [this, number](bool succeeded) {
        QTimer::singleShot(0, &receiver_, [this, number, succeeded] { thumbnailerEnded(number, succeeded); });
    };
    QObject::connect(&process, &QProcess::finished, &process, [done](int code, QProcess::ExitStatus status) {
        done(code == 0 && status == QProcess::NormalExit);
    });
    QObject::connect(&process, &QProcess::errorOccurred, &process, [done](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            done(false);
        }
    });
    const QString program = words.takeFirst();
    process.start(program, words, QIODevice::NotOpen);
    request.limit.start(thumbnailerTimeLimit);
}

void LinuxThumbnails::thumbnailerEnded(unsigned long number, bool succeeded) {
    const auto found = requests_.find(number);
    if (found == requests_.end()) {
        return; // taken back meanwhile
    }
    const Request& finished = *found->second;
    const QImage picture(finished.output->fileName());
    if (succeeded && !picture.isNull()) {
        shareThumbnail(finished.path, picture, finished.pixels);
    }
    answerWith(number, picture);
}

void LinuxThumbnails::answerWith(unsigned long number, QImage picture) {
    const std::unique_ptr<Request> request = std::move(requests_.at(number));
    requests_.erase(number);
    if (picture.isNull()) {
        return;
    }
    if (std::max(picture.width(), picture.height()) > request->pixels) {
        picture = picture.scaled(request->pixels, request->pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    request->answer(std::make_shared<LinuxBitmap>(picture.convertToFormat(QImage::Format_ARGB32_Premultiplied)));
}

} // namespace rb
