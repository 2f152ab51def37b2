#include "desktops/linux/Files.h"

#include <QDir>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QStandardPaths>

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace rb {

namespace {

// What went wrong when a file was to be made, for the user.
std::string reasonInWords(int error) {
    switch (error) {
    case EEXIST:
        return "已有同名文件，请换一个名称。";
    case EACCES:
    case EPERM:
        return "没有在这个文件夹中新建文件的权限。";
    case EROFS:
        return "这个位置是只读的，不能新建文件。";
    case ENOSPC:
    case EDQUOT:
        return "磁盘空间不足。";
    case ENAMETOOLONG:
        return "文件名太长，请换一个短一些的名称。";
    case ENOENT:
    case ENOTDIR:
        return "要保存到的文件夹已经不在了。";
    default:
        return std::error_code(error, std::generic_category()).message();
    }
}

} // namespace

FileFacts LinuxFiles::facts(const std::string& path) const {
    const QFileInfo info(QString::fromStdString(path));
    FileFacts facts;
    facts.exists = info.exists();
    facts.isDirectory = info.isDir();
    facts.isSymbolicLink = info.isSymbolicLink();
    if (facts.exists && !facts.isDirectory) {
        facts.isImage = QMimeDatabase().mimeTypeForFile(info).name().startsWith(QLatin1String("image/"));
    }
    return facts;
}

std::string LinuxFiles::homeDirectory() const {
    return QDir::homePath().toStdString();
}

std::string LinuxFiles::desktopDirectory() const {
    return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation).toStdString();
}

std::optional<std::string> LinuxFiles::createEmptyFile(const std::string& path) {
    constexpr mode_t asTheUserLikes = 0666; // less the user's mask
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, asTheUserLikes);
    if (file < 0) {
        return reasonInWords(errno);
    }
    close(file);
    return std::nullopt;
}

} // namespace rb
