#include "desktops/linux/Sounds.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>

namespace rb {

namespace {

struct Player {
    QString program;
    QStringList arguments;
};

// The first player that is installed, told the volume in its own way.
std::optional<Player> findPlayer(double volume) {
    if (const QString program = QStandardPaths::findExecutable(QStringLiteral("pw-play")); !program.isEmpty()) {
        return Player{program, {QStringLiteral("--volume=%1").arg(volume)}};
    }
    if (const QString program = QStandardPaths::findExecutable(QStringLiteral("paplay")); !program.isEmpty()) {
        constexpr double fullVolume = 65536;
        return Player{program, {QStringLiteral("--volume=%1").arg(qRound(volume * fullVolume))}};
    }
    return std::nullopt;
}

} // namespace

std::optional<QString> LinuxSounds::fileFor(const QString& name) {
    QFile recording(QStringLiteral(":/sounds/%1.wav").arg(name));
    if (!recording.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QDir cache(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                     QStringLiteral("/rook-bay/sounds"));
    const QString path = cache.filePath(name + QStringLiteral(".wav"));
    if (QFileInfo(path).size() == recording.size()) {
        return path;
    }
    QSaveFile copy(path);
    if (!cache.mkpath(QStringLiteral(".")) || !copy.open(QIODevice::WriteOnly) ||
        copy.write(recording.readAll()) != recording.size() || !copy.commit()) {
        return std::nullopt;
    }
    return path;
}

void LinuxSounds::play(const std::string& name, double volume) {
    const auto player = findPlayer(volume);
    if (!player) {
        if (!std::exchange(toldAbsence_, true)) {
            log_.write("no sounds: neither pw-play nor paplay is installed");
        }
        return;
    }
    if (const auto file = fileFor(QString::fromStdString(name))) {
        QProcess process;
        process.setProgram(player->program);
        process.setArguments(player->arguments + QStringList{*file});
        process.setStandardInputFile(QProcess::nullDevice());
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
        process.startDetached();
    }
}

void LinuxSounds::beep() {
    QApplication::beep();
}

} // namespace rb
