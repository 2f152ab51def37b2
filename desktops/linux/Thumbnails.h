#pragma once

#include "platform/Handle.h"
#include "platform/Thumbnails.h"

#include <QImage>
#include <QObject>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>

class QProcess;

namespace rb {

// Pictures of files: decoded by Qt's image plugins, icons from the session's icon theme, documents from the shared
// thumbnail cache or by the thumbnailer programs that are installed. What a thumbnailer makes goes into the shared
// cache as well.
class LinuxThumbnails final : public Thumbnails {
public:
    LinuxThumbnails();
    ~LinuxThumbnails() override;
    LinuxThumbnails(const LinuxThumbnails&) = delete;
    LinuxThumbnails& operator=(const LinuxThumbnails&) = delete;

    std::shared_ptr<const Bitmap> imageThumb(const std::string& path, int maxPixelSize) override;
    Image iconForFile(const std::string& path) override;
    Image iconForFile(const std::string& path, double side) override;
    DecodedPicture squareThumb(const SharedBytes& data, double side, double cornerRadius) override;
    bool canDecode(const std::string& path) override;
    SharedBytes pngData(const SharedBytes& data, const std::atomic<bool>& givenUp) override;
    Handle requestDocumentThumbnail(const std::string& path, Size size, double scale,
                                    std::function<void(std::shared_ptr<const Bitmap>)> answer) override;

private:
    using Answer = std::function<void(std::shared_ptr<const Bitmap>)>;
    struct Request;

    Image iconOf(const std::string& path, int pixels, Size points);
    void answerWith(unsigned long number, QImage picture);
    void thumbnailerEnded(unsigned long number, bool succeeded);
    void runThumbnailer(unsigned long number, const QString& path, int pixels);

    std::map<QStringList, Image> icons_; // by theme, kind of file and size
    std::map<unsigned long, std::unique_ptr<Request>> requests_;
    unsigned long next_ = 0;
    QObject receiver_; // its connections end with it
    Lifetime lifetime_;
};

} // namespace rb
