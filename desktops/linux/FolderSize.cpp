#include "desktops/linux/FolderSize.h"

#include "platform/RunLoop.h"

#include <QDirIterator>
#include <QFileInfo>

#include <atomic>
#include <memory>

namespace rb {

namespace {

constexpr std::int64_t mostFiles = 200'000;

FolderSize measure(const QString& path, const std::atomic<bool>& dropped) {
    FolderSize size;
    constexpr auto everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    QDirIterator entries(path, everything, QDirIterator::Subdirectories);
    for (std::int64_t seen = 0; entries.hasNext() && !dropped; ++seen) {
        if (seen == mostFiles) {
            size.complete = false;
            break;
        }
        entries.next();
        const QFileInfo info = entries.fileInfo();
        if (info.path() == path) {
            ++size.items;
        }
        if (info.isFile() && !info.isSymLink()) {
            size.bytes += info.size();
        }
    }
    return size;
}

} // namespace

Handle measureFolder(RunLoop& loop, const QString& path, std::function<void(const FolderSize&)> answer) {
    const auto dropped = std::make_shared<std::atomic<bool>>(false);
    loop.background(QualityOfService::UserInitiated, [&loop, path, dropped, answer = std::move(answer)] {
        const FolderSize size = measure(path, *dropped);
        loop.post([size, dropped, answer] {
            if (!*dropped) {
                answer(size);
            }
        });
    });
    return Handle([dropped] { *dropped = true; });
}

} // namespace rb
