#include "desktops/linux/Files.h"

#include <QDir>
#include <QFileInfo>
#include <QMimeDatabase>

namespace rb {

FileFacts LinuxFiles::facts(const std::string& path) const {
    const QFileInfo info(QString::fromStdString(path));
    FileFacts facts;
    facts.exists = info.exists();
    facts.isDirectory = info.isDir();
    if (facts.exists && !facts.isDirectory) {
        facts.isImage = QMimeDatabase().mimeTypeForFile(info).name().startsWith(QLatin1String("image/"));
    }
    return facts;
}

std::string LinuxFiles::homeDirectory() const {
    return QDir::homePath().toStdString();
}

} // namespace rb
