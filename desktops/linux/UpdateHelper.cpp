#include "desktops/linux/UpdateHelper.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>

#include <utility>

namespace rb {

QString updateHelperPath() {
    const QString folder = QCoreApplication::applicationDirPath();
    for (const QString& path :
         {folder + QStringLiteral("/rookbay-update"), folder + QStringLiteral("/../libexec/rook-bay/rookbay-update"),
          QStringLiteral("/usr/libexec/rook-bay/rookbay-update")}) {
        if (QFileInfo(path).isExecutable()) {
            return path;
        }
    }
    return {};
}

UpdateHelper::UpdateHelper(const QStringList& arguments, const Output& output, const Ended& ended)
    : process_(new QProcess(QCoreApplication::instance())) {
    QProcess* process = process_;
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // Our own mark for Qt's D-Bus library (see SingleInstance) is no business of other programs.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString bus = QStringLiteral("DBUS_SESSION_BUS_ADDRESS");
    if (environment.value(bus) == QLatin1String("disabled:")) {
        environment.remove(bus);
    }
    process->setProcessEnvironment(environment);
    QObject::connect(process, &QProcess::readyReadStandardOutput, process,
                     [process, output] { output(process->readAllStandardOutput()); });
    QObject::connect(process, &QProcess::finished, process,
                     [output, ended, process](int code, QProcess::ExitStatus how) {
                         if (const QByteArray rest = process->readAllStandardOutput(); !rest.isEmpty()) {
                             output(rest);
                         }
                         ended(how == QProcess::NormalExit ? code : -1);
                     });
    QObject::connect(
        process, &QProcess::errorOccurred, process,
        [ended](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart) {
                ended(-1);
            }
        },
        Qt::QueuedConnection);
    process->start(updateHelperPath(), arguments);
}

UpdateHelper::~UpdateHelper() {
    process_->disconnect();
    if (process_->state() != QProcess::NotRunning) {
        QObject::connect(process_, &QProcess::finished, process_, &QObject::deleteLater);
        process_->kill();
    } else {
        process_->deleteLater();
    }
}

void UpdateHelper::tell(const char* line) {
    process_->write(line);
}

} // namespace rb
